#include "linux/webkit/WebKitEmbeddedView.h"

#include "base/Invariant.h"
#include "base/Translation.h"
#include "linux/http/LoggedAddress.h"
#include "linux/http/TransportErrors.h"
#include "linux/webkit/CertificateProbe.h"
#include "linux/webkit/KeptProcesses.h"
#include "linux/webkit/NativeView.h"
#include "linux/webkit/ScriptMessages.h"
#include "linux/webkit/SwipeGestures.h"
#include "linux/webkit/WebKitCookieStore.h"
#include "linux/webkit/WebProcess.h"
#include "linux/webkit/content/SpellChecking.h"
#include "linux/webkit/content/ViewPreparation.h"
#include "linux/webkit/dialogs/ScriptDialogs.h"
#include "linux/webkit/navigation/ErrorPage.h"
#include "linux/webkit/navigation/LoadErrors.h"
#include "linux/webkit/navigation/NavigationPolicy.h"
#include "linux/webkit/navigation/PageLoad.h"
#include "linux/webkit/permission/PagePermissions.h"
#include "linux/webkit/popup/Popups.h"

#include <utility>

namespace kelo::webkit {

using platform::UrlRequest;

WebKitEmbeddedView::WebKitEmbeddedView(const WebKitSession& shared, platform::Rectangle frame,
                                       const platform::WebViewConfiguration& configuration)
    : session(shared.networkSession(configuration.websiteDataStore)),
      probe(shared.certificateProbe()),
      authority(shared.settings().authority),
      view(makeNativeView(session.get(), frame, configuration)),
      openExternally(shared.settings().openExternally),
      shown(shared.settings().service),
      downloads(session.get(), view.get(), shown),
      pageControls(view.get()),
      retries(view.get(), [this] { tryAgain(); }),
      keptProcesses(std::make_unique<KeptProcesses>(session)),
      pageLoad(std::make_unique<PageLoad>([this] { loadTimedOut(); })),
      cookies(std::make_unique<WebKitCookieStore>(session.get())),
      policy(std::make_unique<NavigationPolicy>(shown, downloads, configuration.linksOpenInBrowser,
                                                openExternally, [this] { tryAgain(); })),
      messages(std::make_unique<ScriptMessages>(
          *this, webkit_web_view_get_user_content_manager(view.get()), shared.settings().service,
          configuration.scriptMessageHandlers)),
      permissions(std::make_unique<PagePermissions>(*this, view.get(), shared.settings().service,
                                                    shared.settings().userChoice)),
      swipes(std::make_unique<SwipeGestures>(view.get())),
      process(std::make_unique<WebProcess>(
          view.get(), WebProcess::Handlers{[this] { responsivenessChanged(); },
                                           [this](auto reason) { processFailed(reason); },
                                           [this] { processEnded(); },
                                           [this] { return pageLoad->isUnanswered(); }})),
      scriptDialogs(std::make_unique<ScriptDialogs>(
          view.get(), shown, servicesFor(configuration, shared.settings().dialogs),
          ScriptDialogs::Handlers{[this] { dialogOpened(); }, [this] { dialogAnswered(); },
                                  [this] { pageStayed(); }})) {
    connectLoadSignals();
    connectPolicySignals();
    if (!configuration.linksOpenInBrowser)
        offerPopups(view.get(), {shown.service, openExternally, shared.settings().dialogs});
    prepareView(view.get(), shown.service);
    checkSpellingOfText(view.get());
}

WebKitEmbeddedView::~WebKitEmbeddedView() = default;

template <typename Function>
void WebKitEmbeddedView::connect(const char* signal, Function* handler) {
    connections.push_back(gobject::connectSignal(view.get(), signal, handler, this));
}

void WebKitEmbeddedView::connectLoadSignals() {
    using Self = WebKitEmbeddedView*;
    connect(
        "load-changed",
        +[](WebKitWebView*, WebKitLoadEvent event, Self self) { self->loadChanged(event); });
    connect(
        "notify::is-loading",
        +[](WebKitWebView*, GParamSpec*, Self self) { self->loadingChanged(); });
    connect(
        "notify::estimated-load-progress",
        +[](WebKitWebView*, GParamSpec*, Self self) { self->pageLoad->progressed(); });
    connect(
        "resource-load-started",
        +[](WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest* request, Self self) {
            self->resourceStarted(resource, request);
        });
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
}

void WebKitEmbeddedView::connectPolicySignals() {
    using Self = WebKitEmbeddedView*;
    connect(
        "decide-policy",
        +[](WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
            Self self) -> gboolean { return self->policy->decide(view, decision, type); });
}

void WebKitEmbeddedView::load(UrlRequest request) {
    if (request.method != "GET" || request.body)
        invariantBroken("a web view is asked for pages with GET and no body");
    // A page that waits for an answer loads no other page, and would pass for one that hangs.
    scriptDialogs->loadRequested();
    process->endIfItHangs();
    startLoad(request);
    probe->start(request.url);
}

void WebKitEmbeddedView::startLoad(const UrlRequest& request) {
    permissions->navigationStarted();
    // The end of the former document says nothing about this one.
    documentConnection = {};
    pageLoad->requestPage(request);
    webkit_web_view_load_request(view.get(), nativeRequest(request).get());
    if (pageLoad->isUnanswered())
        process->expectAnswer();
}

void WebKitEmbeddedView::loadAgain(const std::string& address) {
    webkit_web_view_load_uri(view.get(), address.c_str());
}

// A request to load a page is among what a process that hangs does not take.
void WebKitEmbeddedView::responsivenessChanged() {
    if (pageLoad->isUnanswered() && !process->answers()) {
        g_warning("The page hangs. Its process is ended so that another page can be loaded");
        const auto request = pageLoad->takeUnanswered();
        process->endIfItHangs();
        startLoad(*request);
    }
    tellPageObserver();
}

void WebKitEmbeddedView::dialogOpened() {
    process->dialogOpened();
    pageLoad->pause();
}

void WebKitEmbeddedView::dialogAnswered() {
    process->dialogAnswered();
    pageLoad->goOn();
}

// Nothing was loaded, so nothing is waited for.
void WebKitEmbeddedView::pageStayed() {
    pageControls.loadGivenUp();
    pageLoad->documentCompleted();
    pageLoad->takeUnanswered();
    permissions->navigationEnded();
}

std::optional<Url> WebKitEmbeddedView::url() const {
    const char* const address = webkit_web_view_get_uri(view.get());
    return address ? Url::parse(address) : std::nullopt;
}

platform::CookieStore& WebKitEmbeddedView::cookieStore() {
    return *cookies;
}

std::optional<std::string> WebKitEmbeddedView::foreignHost() const {
    return shown.isForeign() ? std::optional(shown.host()) : std::nullopt;
}

void WebKitEmbeddedView::returnToService() {
    load(UrlRequest{shown.service});
}

void WebKitEmbeddedView::openInBrowser() {
    if (const auto address = shown.addressForBrowser())
        openExternally(*address);
}

bool WebKitEmbeddedView::answers() const {
    return process->answers();
}

void WebKitEmbeddedView::reload() {
    const char* const address = webkit_web_view_get_uri(view.get());
    scriptDialogs->loadRequested();
    if (address && answers()) {
        webkit_web_view_reload(view.get());
        return;
    }
    const std::string shownAddress = address ? address : shown.service.absoluteString();
    process->endIfItHangs();
    loadAgain(shownAddress);
}

void WebKitEmbeddedView::tellPageObserver() const {
    if (const auto observer = pageObserver.lock())
        (*observer)();
}

void WebKitEmbeddedView::setUserInterfaceDelegate(
    std::weak_ptr<platform::UserInterfaceDelegate> newDelegate) {
    permissions->setDelegate(std::move(newDelegate));
}

void WebKitEmbeddedView::setAllowsBackForwardNavigationGestures(bool allowed) {
    swipes->setAllowed(allowed);
}

void WebKitEmbeddedView::setAllowsMediaCapture(bool allowed) {
    permissions->setAllowed(allowed);
}

void WebKitEmbeddedView::loadChanged(WebKitLoadEvent event) {
    switch (event) {
    case WEBKIT_LOAD_STARTED:
        pageLoad->started();
        if (pageLoad->isPage())
            retries.loadStarted();
        permissions->navigationStarted();
        break;
    case WEBKIT_LOAD_REDIRECTED:
        pageLoad->progressed();
        break;
    case WEBKIT_LOAD_COMMITTED:
        pageLoad->committed();
        if (pageLoad->isPage())
            retries.pageArrived();
        permissions->pageChanged(pageLoad->isPage() ? webkit_web_view_get_uri(view.get())
                                                    : nullptr);
        shown.committed(webkit_web_view_get_uri(view.get()));
        downloads.pageChanged();
        tellPageObserver();
        process->pageChanged();
        break;
    case WEBKIT_LOAD_FINISHED: {
        permissions->navigationEnded();
        const bool arrived = pageLoad->finished();
        if (arrived) {
            g_debug("page: %s has arrived",
                    http::loggedAddress(webkit_web_view_get_uri(view.get())).c_str());
            keptProcesses->pageArrived(url());
        }
        if (const auto listener = delegate.lock(); listener && arrived)
            listener->didFinishNavigation(*this);
        break;
    }
    }
}

// Of a load that led to another place in the shown page, the engine tells nothing else.
void WebKitEmbeddedView::loadingChanged() {
    if (webkit_web_view_is_loading(view.get()))
        return;
    pageLoad->documentCompleted();
    permissions->navigationEnded();
}

void WebKitEmbeddedView::resourceStarted(WebKitWebResource* resource, WebKitURIRequest* request) {
    if (resource != webkit_web_view_get_main_resource(view.get()))
        return;
    pageLoad->requested(webkit_uri_request_get_http_method(request));
    documentConnection = gobject::connectSignal(
        resource, "finished",
        +[](WebKitWebResource*, WebKitEmbeddedView* self) { self->pageLoad->documentCompleted(); },
        this);
}

bool WebKitEmbeddedView::loadFailed(const char* address, const GError& error) {
    pageLoad->failed();
    if (pageLoad->awaitsErrorPage())
        return true;
    const std::optional<Url> url = Url::parse(address);
    // Only a redirect gets this far. The policy has stopped it.
    if (url && url->scheme() == "http") {
        showErrorPage(translated("This page is not secure"),
                      translated("It leads to %1 without encryption, so that others could read and "
                                 "change what is sent. Ask those who run the service.",
                                 {url->host()}),
                      address);
        return true;
    }
    if (isReplaced(error))
        return true;
    g_warning("%s did not load: %s %d: %s", http::loggedAddress(address).c_str(),
              g_quark_to_string(error.domain), error.code, error.message);
    // A network process that ends forgets the allowed certificates, so one loss can cause the next.
    // The user is told only if repeating does not help.
    if (isLostByTheEngine(error) && !pageLoad->isAnswerToForm() && pageLoad->repeatLost()) {
        loadAgain(address);
        return true;
    }
    const std::string sentence =
        url ? http::transportError(error, http::TransferPhase::connecting, *url)
                  .localizedDescription()
            : translated("The address cannot be shown here.");
    showUnreachable(sentence, address);
    return true;
}

void WebKitEmbeddedView::loadTimedOut() {
    const char* const address = webkit_web_view_get_uri(view.get());
    const std::optional<Url> url = address ? Url::parse(address) : std::nullopt;
    const std::string sentence =
        url ? http::timeOutError(url->host(), pageLoad->timeout()).localizedDescription()
            : translated("The service did not answer. Try again later.");
    g_warning("%s made no progress for %lld seconds and was stopped",
              http::loggedAddress(address).c_str(),
              static_cast<long long>(pageLoad->timeout().count()));
    const std::string failedAddress = address ? address : "";
    process->endIfItHangs();
    webkit_web_view_stop_loading(view.get());
    showUnreachable(sentence, failedAddress);
}

bool WebKitEmbeddedView::certificateRefused(const char* address, GTlsCertificate* certificate,
                                            GTlsCertificateFlags systemProblems) {
    pageLoad->failed();
    const std::optional<Url> url = Url::parse(address);
    if (!url)
        return false;
    const GTlsCertificateFlags problems = authority->problems(certificate, *url);
    // The engine forgets allowed certificates when its network process ends, so a later load may
    // allow one again. But a load that fails straight after is not repeated for ever.
    if (problems == 0 && pageLoad->allowCertificate()) {
        webkit_network_session_allow_tls_certificate_for_host(session.get(), certificate,
                                                              url->host().c_str());
        if (pageLoad->isAnswerToForm())
            showUnreachable(
                translated("The connection to %1 was lost, and nothing was sent. Try again.",
                           {url->host()}),
                address);
        else
            loadAgain(address);
        return true;
    }
    const bool ourAuthority = (problems & G_TLS_CERTIFICATE_UNKNOWN_CA) == 0;
    g_warning("The certificate of %s was refused (%#x)", url->host().c_str(),
              static_cast<unsigned>(systemProblems));
    showErrorPage(translated("This page is not secure"),
                  http::certificateError(ourAuthority ? problems : systemProblems, *url)
                      .localizedDescription(),
                  address);
    return true;
}

void WebKitEmbeddedView::processEnded() {
    pageLoad->processEnded();
    permissions->pageChanged(nullptr);
}

void WebKitEmbeddedView::processFailed(WebKitWebProcessTerminationReason reason) {
    // The process died before it began to load the requested page. So that page is loaded, and
    // nothing is said about the former one.
    if (const auto request = pageLoad->takeUnanswered()) {
        startLoad(*request);
        return;
    }
    const char* const address = webkit_web_view_get_uri(view.get());
    showErrorPage(translated("This page stopped working"),
                  reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT
                      ? translated("It needed more memory than this computer can give it.")
                      : translated("Something went wrong while it was shown."),
                  address ? address : "");
}

void WebKitEmbeddedView::showErrorPage(const std::string& heading, const std::string& sentence,
                                       const std::string& address,
                                       std::optional<std::chrono::seconds> retryIn) {
    // A form is not sent again: the page with the form is shown for that.
    pageLoad->requestErrorPage(pageLoad->isAnswerToForm() ? shown.address() : address);
    webkit_web_view_load_alternate_html(view.get(), errorPage(heading, sentence, retryIn).c_str(),
                                        address.c_str(), nullptr);
}

void WebKitEmbeddedView::showUnreachable(const std::string& sentence, const std::string& address) {
    // A form is sent by the user alone.
    showErrorPage(unreachableHeading(Url::parse(address), isOnline()), sentence, address,
                  pageLoad->isAnswerToForm() ? std::nullopt : retries.noticeShown());
}

void WebKitEmbeddedView::tryAgain() {
    // Empty if the link is not on an error page: any page can have such a link.
    const std::string address = pageLoad->addressToTryAgain();
    if (address.empty())
        return;
    downloads.requested(address);
    loadAgain(address);
}

} // namespace kelo::webkit
