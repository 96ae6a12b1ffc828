#include "linux/webkit/navigation/NavigationPolicy.h"

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
    constexpr std::array<std::string_view, 7> known = {"https", "http", "about",     "blob",
                                                       "data",  "ws",   "javascript"};
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

} // namespace

NavigationPolicy::NavigationPolicy(Url service, bool linksOpenInBrowser,
                                   ExternalOpener openExternally, std::function<void()> tryAgain)
    : service(std::move(service)),
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

bool NavigationPolicy::belongsInBrowser(WebKitWebView* view, WebKitNavigationAction* action) const {
    if (!linksOpenInBrowser || !webkit_navigation_action_is_user_gesture(action) ||
        webkit_navigation_action_get_navigation_type(action) != WEBKIT_NAVIGATION_TYPE_LINK_CLICKED)
        return false;
    const auto withoutFragment = [](const std::string& address) {
        return address.substr(0, address.find('#'));
    };
    const char* const shown = webkit_web_view_get_uri(view);
    return withoutFragment(addressOf(action)) != withoutFragment(shown ? shown : "");
}

bool NavigationPolicy::decideNavigation(WebKitWebView* view, WebKitPolicyDecision* decision,
                                        WebKitNavigationAction* action) {
    const std::string address = addressOf(action);
    if (address == tryAgainAddress) {
        webkit_policy_decision_ignore(decision);
        tryAgain();
        return true;
    }
    const std::string scheme = schemeOf(address);
    if ((scheme == "https" || scheme == "http") && belongsInBrowser(view, action)) {
        webkit_policy_decision_ignore(decision);
        openExternally(address);
        return true;
    }
    if (isShownByTheEngine(scheme))
        return false;
    webkit_policy_decision_ignore(decision);
    if (mayOpenAnotherProgram(scheme) && webkit_navigation_action_is_user_gesture(action))
        openExternally(address);
    return true;
}

void NavigationPolicy::decideNewWindow(WebKitWebView* view, WebKitPolicyDecision* decision,
                                       WebKitNavigationAction* action) {
    webkit_policy_decision_ignore(decision);
    if (!webkit_navigation_action_is_user_gesture(action))
        return;
    const std::string address = addressOf(action);
    const std::optional<Url> url = Url::parse(address);
    if (url && url->hasSameOrigin(service))
        webkit_web_view_load_uri(view, address.c_str());
    else if ((url && (url->scheme() == "https" || url->scheme() == "http")) ||
             mayOpenAnotherProgram(schemeOf(address)))
        openExternally(address);
}

bool NavigationPolicy::decideResponse(WebKitPolicyDecision* decision,
                                      WebKitResponsePolicyDecision* response) {
    const bool shown = webkit_response_policy_decision_is_mime_type_supported(response) &&
                       !isAttachment(webkit_response_policy_decision_get_response(response));
    if (shown || !webkit_response_policy_decision_is_main_frame_main_resource(response))
        return false;
    webkit_policy_decision_download(decision);
    return true;
}

} // namespace kelo::webkit
