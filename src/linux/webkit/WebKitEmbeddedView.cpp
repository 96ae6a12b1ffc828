#include "linux/webkit/WebKitEmbeddedView.h"

#include "base/Invariant.h"
#include "linux/http/TransportErrors.h"
#include "linux/webkit/NoticePage.h"

#include <utility>

namespace kelo::webkit {

using platform::InjectionTime;
using platform::UrlRequest;
using platform::UserScript;
using platform::WebViewConfiguration;

namespace {

void addScript(WebKitUserContentManager* manager, const UserScript& script) {
    WebKitUserScript* const native =
        webkit_user_script_new(script.source.c_str(),
                               script.forMainFrameOnly ? WEBKIT_USER_CONTENT_INJECT_TOP_FRAME
                                                       : WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                               script.injectionTime == InjectionTime::atDocumentStart
                                   ? WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START
                                   : WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_END,
                               nullptr, nullptr);
    webkit_user_content_manager_add_script(manager, native);
    webkit_user_script_unref(native);
}

gobject::GObjectPointer<WebKitWebView> makeNativeView(WebKitNetworkSession* session,
                                                      platform::Rectangle frame,
                                                      const WebViewConfiguration& configuration) {
    const auto content =
        gobject::GObjectPointer<WebKitUserContentManager>::adopt(webkit_user_content_manager_new());
    for (const UserScript& script : configuration.userScripts)
        addScript(content.get(), script);

    const auto settings = gobject::GObjectPointer<WebKitSettings>::adopt(webkit_settings_new());
    // The page's own script, not ours: this leaves user scripts alone.
    webkit_settings_set_enable_javascript_markup(settings.get(),
                                                 configuration.allowsContentJavaScript);
    // Until there is somebody to decide: see MediaPermission.
    webkit_settings_set_enable_media_stream(settings.get(), FALSE);

    auto view = gobject::GObjectPointer<WebKitWebView>::share(WEBKIT_WEB_VIEW(
        g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session, "user-content-manager",
                     content.get(), "settings", settings.get(), nullptr)));
    gtk_widget_set_hexpand(GTK_WIDGET(view.get()), TRUE);
    gtk_widget_set_vexpand(GTK_WIDGET(view.get()), TRUE);
    if (frame.width > 0 && frame.height > 0)
        gtk_widget_set_size_request(GTK_WIDGET(view.get()), static_cast<int>(frame.width),
                                    static_cast<int>(frame.height));
    return view;
}

// Another load came in between, or the load became a download.
bool isNoFailure(const GError& error) {
    return g_error_matches(&error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
           g_error_matches(&error, WEBKIT_POLICY_ERROR,
                           WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
}

// The engine's network process has gone (which has no name in the library's interface), or
// cancelled a load that nobody asked it to cancel: it does so at times where a certificate should
// be refused.
bool isLostByTheEngine(const GError& error) {
    constexpr int internalError = 300;
    return g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CANCELLED) ||
           (error.domain == g_quark_from_static_string("WebKitErrorDomain") &&
            error.code == internalError);
}

} // namespace

WebKitEmbeddedView::WebKitEmbeddedView(gobject::GObjectPointer<WebKitNetworkSession> session,
                                       std::shared_ptr<CertificateProbe> probe,
                                       const WebKitSessionSettings& settings,
                                       platform::Rectangle frame,
                                       const WebViewConfiguration& configuration)
    : session(session),
      probe(std::move(probe)),
      authority(settings.authority),
      view(makeNativeView(session.get(), frame, configuration)),
      cookies(session.get()),
      policy(settings.service, settings.openExternally, [this] { tryAgain(); }),
      messages(*this, webkit_web_view_get_user_content_manager(view.get()), settings.service,
               configuration.scriptMessageHandlers),
      mediaPermission(*this, view.get(), settings.service) {
    connectSignals();
}

WebKitEmbeddedView::~WebKitEmbeddedView() {
    g_signal_handlers_disconnect_by_data(view.get(), this);
}

void WebKitEmbeddedView::connectSignals() {
    using Self = WebKitEmbeddedView*;
    const auto connect = [this](const char* signal, auto* handler) {
        g_signal_connect(view.get(), signal, reinterpret_cast<GCallback>(handler), this);
    };
    connect(
        "load-changed",
        +[](WebKitWebView*, WebKitLoadEvent event, Self self) { self->loadChanged(event); });
    connect(
        "load-failed",
        +[](WebKitWebView*, WebKitLoadEvent, const char* address, GError* error,
            Self self) -> gboolean { return self->loadFailed(address, *error); });
    connect(
        "load-failed-with-tls-errors",
        +[](WebKitWebView*, const char* address, GTlsCertificate* certificate,
            GTlsCertificateFlags problems, Self self) -> gboolean {
            return self->certificateRefused(address, certificate, problems);
        });
    connect(
        "web-process-terminated", +[](WebKitWebView*, WebKitWebProcessTerminationReason reason,
                                      Self self) { self->processEnded(reason); });
    connect(
        "notify::is-web-process-responsive",
        +[](WebKitWebView*, GParamSpec*, Self self) { self->responsivenessChanged(); });
    connect(
        "decide-policy",
        +[](WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
            Self self) -> gboolean { return self->policy.decide(view, decision, type); });
    connect(
        "permission-request",
        +[](WebKitWebView*, WebKitPermissionRequest* request, Self self) -> gboolean {
            self->permissionRequested(request);
            return TRUE;
        });
    connect(
        "query-permission-state",
        +[](WebKitWebView*, WebKitPermissionStateQuery* query, Self self) -> gboolean {
            webkit_permission_state_query_finish(query, self->mediaPermission.stateFor(query));
            return TRUE;
        });
}

void WebKitEmbeddedView::load(UrlRequest request) {
    if (request.method != "GET" || request.body)
        invariantBroken("a web view is asked for pages with GET and no body");
    const auto native = gobject::GObjectPointer<WebKitURIRequest>::adopt(
        webkit_uri_request_new(request.url.absoluteString().c_str()));
    SoupMessageHeaders* const headers = webkit_uri_request_get_http_headers(native.get());
    for (const auto& [name, value] : request.headers)
        if (headers)
            soup_message_headers_append(headers, name.c_str(), value.c_str());
    // A page that hangs would never let another one in.
    if (!webkit_web_view_get_is_web_process_responsive(view.get()))
        webkit_web_view_terminate_web_process(view.get());
    startLoad(native);
    probe->start(request.url);
}

void WebKitEmbeddedView::startLoad(const gobject::GObjectPointer<WebKitURIRequest>& request) {
    noticeAnnounced = false;
    mediaPermission.navigationStarted();
    unheardRequest = pageShown ? request : gobject::GObjectPointer<WebKitURIRequest>();
    webkit_web_view_load_request(view.get(), request.get());
}

// The engine waits for some seconds for a process to answer, and a load is such a question. Before
// the first page the process may just be slow to start.
void WebKitEmbeddedView::responsivenessChanged() {
    if (!unheardRequest || webkit_web_view_get_is_web_process_responsive(view.get()))
        return;
    g_warning("The page hangs; its process is ended to load another page");
    const auto request = std::exchange(unheardRequest, {});
    webkit_web_view_terminate_web_process(view.get());
    startLoad(request);
}

std::optional<Url> WebKitEmbeddedView::url() const {
    const char* const address = webkit_web_view_get_uri(view.get());
    return address ? Url::parse(address) : std::nullopt;
}

void WebKitEmbeddedView::setNavigationDelegate(
    std::weak_ptr<platform::NavigationDelegate> newDelegate) {
    delegate = std::move(newDelegate);
}

void WebKitEmbeddedView::setUserInterfaceDelegate(
    std::weak_ptr<platform::UserInterfaceDelegate> newDelegate) {
    mediaPermission.setDelegate(std::move(newDelegate));
}

void WebKitEmbeddedView::setAllowsBackForwardNavigationGestures(bool allowed) {
    webkit_settings_set_enable_back_forward_navigation_gestures(
        webkit_web_view_get_settings(view.get()), allowed);
}

// The engine ends every load with "finished": after a failure, and for our own notice, too.
void WebKitEmbeddedView::loadChanged(WebKitLoadEvent event) {
    if (event == WEBKIT_LOAD_STARTED) {
        stage = noticeAnnounced ? Stage::notice : Stage::page;
        noticeAnnounced = false;
        unheardRequest = {};
        mediaPermission.navigationStarted();
    }
    if (event == WEBKIT_LOAD_COMMITTED) {
        pageShown = true;
        mediaPermission.pageChanged(stage == Stage::page ? webkit_web_view_get_uri(view.get())
                                                         : nullptr);
        certificateTried = false;
        lossesForgiven = 0;
    }
    if (event == WEBKIT_LOAD_FINISHED)
        mediaPermission.navigationEnded();
    if (event != WEBKIT_LOAD_FINISHED || stage != Stage::page)
        return;
    if (const auto listener = delegate.lock())
        listener->didFinishNavigation(*this);
}

bool WebKitEmbeddedView::loadFailed(const char* address, const GError& error) {
    stage = Stage::failed;
    if (isNoFailure(error))
        return true;
    g_warning("%s did not load: %s %d: %s", address, g_quark_to_string(error.domain), error.code,
              error.message);
    // Nobody needs to hear of it unless it goes on: a process that ends takes what it was allowed
    // along, so that one loss brings about the next.
    constexpr int mostLosses = 3;
    if (isLostByTheEngine(error) && lossesForgiven < mostLosses) {
        ++lossesForgiven;
        certificateTried = false;
        webkit_web_view_load_uri(view.get(), address);
        return true;
    }
    const std::optional<Url> url = Url::parse(address);
    const std::string sentence =
        url ? http::transportError(error, http::TransferPhase::beforeReply, *url)
                  .localizedDescription()
            : "The address cannot be shown here.";
    showNotice("This page did not load", sentence, address);
    return true;
}

bool WebKitEmbeddedView::certificateRefused(const char* address, GTlsCertificate* certificate,
                                            GTlsCertificateFlags systemProblems) {
    stage = Stage::failed;
    const std::optional<Url> url = Url::parse(address);
    if (!url)
        return false;
    const GTlsCertificateFlags problems = authority->problems(certificate, *url);
    // The engine forgets what it was allowed when its network process ends, so each load may allow
    // anew; but a certificate that fails straight after is not tried for ever.
    if (problems == 0 && !std::exchange(certificateTried, true)) {
        webkit_network_session_allow_tls_certificate_for_host(session.get(), certificate,
                                                              url->host().c_str());
        webkit_web_view_load_uri(view.get(), address);
        return true;
    }
    const bool ourAuthority = (problems & G_TLS_CERTIFICATE_UNKNOWN_CA) == 0;
    g_warning("The certificate of %s was refused (%#x)", url->host().c_str(),
              static_cast<unsigned>(systemProblems));
    showNotice("This page is not secure",
               http::certificateError(ourAuthority ? problems : systemProblems, *url)
                   .localizedDescription(),
               address);
    return true;
}

void WebKitEmbeddedView::processEnded(WebKitWebProcessTerminationReason reason) {
    stage = Stage::failed;
    pageShown = false;
    mediaPermission.pageChanged(nullptr);
    if (reason == WEBKIT_WEB_PROCESS_TERMINATED_BY_API)
        return;
    // Another page was asked for before the engine noticed: that one died with the process, too,
    // and nobody wants to hear of the former one.
    if (const auto request = std::exchange(unheardRequest, {})) {
        startLoad(request);
        return;
    }
    const char* const address = webkit_web_view_get_uri(view.get());
    showNotice("This page stopped working",
               reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT
                   ? "It needed more memory than this computer can give it."
                   : "Something went wrong while it was shown.",
               address ? address : "");
}

void WebKitEmbeddedView::permissionRequested(WebKitPermissionRequest* request) {
    if (WEBKIT_IS_USER_MEDIA_PERMISSION_REQUEST(request))
        mediaPermission.decide(WEBKIT_USER_MEDIA_PERMISSION_REQUEST(request));
    else
        webkit_permission_request_deny(request);
}

void WebKitEmbeddedView::showNotice(const std::string& heading, const std::string& sentence,
                                    const std::string& address) {
    failedAddress = address;
    noticeAnnounced = true;
    webkit_web_view_load_alternate_html(view.get(), noticePage(heading, sentence).c_str(),
                                        address.c_str(), nullptr);
}

void WebKitEmbeddedView::tryAgain() {
    // A page of the web may have such a link as well.
    if (stage == Stage::notice && !failedAddress.empty())
        webkit_web_view_load_uri(view.get(), failedAddress.c_str());
}

} // namespace kelo::webkit
