#include "linux/webkit/navigation/NavigationPolicy.h"

#include "base/async/Spawn.h"
#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/webkit/navigation/ErrorPage.h"

#include <array>
#include <string>
#include <string_view>

namespace kelo::webkit {

namespace {

std::string addressOf(WebKitNavigationAction* action) {
    const char* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    return address ? address : "";
}

std::string schemeOf(const std::string& address) {
    const char* scheme = g_uri_peek_scheme(address.c_str());
    return scheme ? scheme : "";
}

bool isShownByTheEngine(std::string_view scheme) {
    constexpr std::array<std::string_view, 6> known = {"https", "about", "blob",
                                                       "data",  "ws",    "javascript"};
    for (const auto candidate : known)
        if (scheme == candidate)
            return true;
    return false;
}

// Only schemes that a user expects to open by a click. A page must not be able to start every
// program that has registered a scheme.
bool mayOpenAnotherProgram(std::string_view scheme) {
    return scheme == "mailto" || scheme == "tel";
}

bool isAttachment(WebKitURIResponse* response) {
    SoupMessageHeaders* const headers = webkit_uri_response_get_http_headers(response);
    if (!headers)
        return false;
    char* disposition = nullptr;
    GHashTable* parameters = nullptr;
    if (!soup_message_headers_get_content_disposition(headers, &disposition, &parameters))
        return false;
    const gobject::GText owned(disposition);
    const gobject::GHashTablePointer ownedParameters(parameters);
    return owned && g_ascii_strcasecmp(owned.get(), "attachment") == 0;
}

bool isFollowedLink(WebKitNavigationAction* action) {
    return webkit_navigation_action_is_user_gesture(action) &&
           webkit_navigation_action_get_navigation_type(action) ==
               WEBKIT_NAVIGATION_TYPE_LINK_CLICKED;
}

using DecisionPointer = gobject::GObjectPointer<WebKitPolicyDecision>;

// The engine does not say which frame a link belongs to. But a click or a key goes to the frame
// with the focus. In a world of our own, because the page's scripts can replace "activeElement".
constexpr const char* focusIsInAFrame = R"((() => {
  let focus = document.activeElement;
  while (focus?.shadowRoot?.activeElement) focus = focus.shadowRoot.activeElement;
  return /^(iframe|frame|object|embed)$/.test(focus?.localName);
})())";

Task<bool> comesFromAFrame(gobject::GObjectPointer<WebKitWebView> view) {
    const auto start = [&view](GAsyncReadyCallback ready, gpointer data) {
        webkit_web_view_evaluate_javascript(view.get(), focusIsInAFrame, -1, "kelo-links", nullptr,
                                            nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    const auto answer = gobject::GObjectPointer<JSCValue>::adopt(
        webkit_web_view_evaluate_javascript_finish(view.get(), result.get(), nullptr));
    co_return answer.get() && jsc_value_to_boolean(answer.get());
}

// A frame follows its links itself: what the service embeds is no reason to leave the program.
Task<void> openOutsideUnlessFromAFrame(gobject::GObjectPointer<WebKitWebView> view,
                                       DecisionPointer decision, std::string address,
                                       ExternalOpener open) {
    const bool isOfAFrame = co_await comesFromAFrame(view);
    if (isOfAFrame) {
        webkit_policy_decision_use(decision.get());
        co_return;
    }
    webkit_policy_decision_ignore(decision.get());
    open(address);
}

} // namespace

NavigationPolicy::NavigationPolicy(const ShownPage& shown, Downloads& downloads,
                                   bool linksOpenInBrowser, ExternalOpener openExternally,
                                   std::function<void()> tryAgain)
    : shown(shown),
      downloads(downloads),
      linksOpenInBrowser(linksOpenInBrowser),
      openExternally(std::move(openExternally)),
      tryAgain(std::move(tryAgain)) {}

bool NavigationPolicy::decide(WebKitWebView* view, WebKitPolicyDecision* decision,
                              WebKitPolicyDecisionType type) {
    switch (type) {
    case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
        return decideNavigation(view, decision,
                                webkit_navigation_policy_decision_get_navigation_action(
                                    WEBKIT_NAVIGATION_POLICY_DECISION(decision)));
    case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION:
        decideNewWindow(view, decision,
                        webkit_navigation_policy_decision_get_navigation_action(
                            WEBKIT_NAVIGATION_POLICY_DECISION(decision)));
        return true;
    case WEBKIT_POLICY_DECISION_TYPE_RESPONSE:
        return decideResponse(decision, WEBKIT_RESPONSE_POLICY_DECISION(decision));
    }
    return false;
}

bool NavigationPolicy::decideNavigation(WebKitWebView* view, WebKitPolicyDecision* decision,
                                        WebKitNavigationAction* action) {
    const std::string address = addressOf(action);
    if (address == tryAgainAddress) {
        webkit_policy_decision_ignore(decision);
        tryAgain();
        return true;
    }
    // By a reload, or on the way back. What the form asked for would be done twice.
    if (webkit_navigation_action_get_navigation_type(action) ==
        WEBKIT_NAVIGATION_TYPE_FORM_RESUBMITTED) {
        webkit_policy_decision_ignore(decision);
        webkit_web_view_load_uri(view, address.c_str());
        return true;
    }
    noteRequest(view, action, address);
    const std::string scheme = schemeOf(address);
    const bool isFollowed = isFollowedLink(action);
    // In frames, too, where the engine would refuse it later.
    if (scheme == "http") {
        webkit_policy_decision_ignore(decision);
        if (isFollowed)
            openExternally(address);
        return true;
    }
    if (scheme == "https" && isFollowed && !webkit_navigation_action_is_redirect(action))
        return decideLink(view, decision, address);
    if (isShownByTheEngine(scheme))
        return false;
    webkit_policy_decision_ignore(decision);
    if (mayOpenAnotherProgram(scheme) && webkit_navigation_action_is_user_gesture(action))
        openExternally(address);
    return true;
}

void NavigationPolicy::noteRequest(WebKitWebView* view, WebKitNavigationAction* action,
                                   const std::string& address) {
    const bool isRedirect = webkit_navigation_action_is_redirect(action);
    // A load that the program starts carries no gesture, and neither do its redirects.
    if (const char* const current = webkit_web_view_get_uri(view); current && current == address) {
        if (isRedirect)
            downloads.redirected(ownLoad, address);
        ownLoad = address;
    }
    if (!webkit_navigation_action_is_user_gesture(action))
        return;
    // Only a foreign frame saves what is behind a foreign link. Elsewhere the browser opens it.
    if (isFollowedLink(action) && !isRedirect && schemeOf(address) != "data" &&
        !isOfThePage(address))
        return;
    downloads.requested(address);
}

bool NavigationPolicy::isOfThePage(const std::string& address) const {
    const std::string_view prefix = "blob:";
    const auto url =
        Url::parse(address.starts_with(prefix) ? address.substr(prefix.size()) : address);
    return url && (url->hasSameOrigin(shown.service) || shown.belongsTo(*url));
}

bool NavigationPolicy::decideLink(WebKitWebView* view, WebKitPolicyDecision* decision,
                                  const std::string& address) {
    if (linksOpenInBrowser) {
        if (!leavesThePage(view, address))
            return false;
        webkit_policy_decision_ignore(decision);
        openExternally(address);
        return true;
    }
    if (isOfThePage(address))
        return false;
    spawn(openOutsideUnlessFromAFrame(gobject::GObjectPointer<WebKitWebView>::share(view),
                                      DecisionPointer::share(decision), address, openExternally));
    return true;
}

bool NavigationPolicy::leavesThePage(WebKitWebView* view, const std::string& address) const {
    const char* const current = webkit_web_view_get_uri(view);
    return withoutFragment(address) != withoutFragment(current ? current : "");
}

void NavigationPolicy::decideNewWindow(WebKitWebView* view, WebKitPolicyDecision* decision,
                                       WebKitNavigationAction* action) {
    webkit_policy_decision_ignore(decision);
    if (!webkit_navigation_action_is_user_gesture(action))
        return;
    const std::string address = addressOf(action);
    const std::optional<Url> url = Url::parse(address);
    if (url && url->hasSameOrigin(shown.service)) {
        downloads.requested(address);
        webkit_web_view_load_uri(view, address.c_str());
    } else if ((url && (url->scheme() == "https" || url->scheme() == "http")) ||
               mayOpenAnotherProgram(schemeOf(address)))
        openExternally(address);
}

bool NavigationPolicy::decideResponse(WebKitPolicyDecision* decision,
                                      WebKitResponsePolicyDecision* response) {
    WebKitURIResponse* const reply = webkit_response_policy_decision_get_response(response);
    const bool isFile = isAttachment(reply);
    if (webkit_response_policy_decision_is_main_frame_main_resource(response)) {
        if (!isFile && webkit_response_policy_decision_is_mime_type_supported(response))
            return false;
        webkit_policy_decision_download(decision);
        return true;
    }
    const auto url = Url::parse(webkit_uri_response_get_uri(reply));
    if (!isFile || (url && url->hasSameOrigin(shown.service)))
        return false;
    webkit_policy_decision_ignore(decision);
    return true;
}

} // namespace kelo::webkit
