#include "component/webkit/WebKitFixture.h"

#include "linux/gobject/AsyncResult.h"

#include <cstdlib>
#include <stdexcept>

namespace kelo::test {

namespace {

Task<std::string> evaluated(WebKitWebView* view, std::string script) {
    const auto start = [view, &script](GAsyncReadyCallback ready, gpointer data) {
        webkit_web_view_evaluate_javascript(view, script.c_str(),
                                            static_cast<gssize>(script.size()), nullptr, nullptr,
                                            nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    GError* error = nullptr;
    JSCValue* const value = webkit_web_view_evaluate_javascript_finish(view, result.get(), &error);
    if (const gobject::GErrorPointer failure(error); failure)
        co_return std::string("error: ") + failure->message;
    const auto owned = gobject::GObjectPointer<JSCValue>::adopt(value);
    const gobject::GText text(jsc_value_to_string(value));
    co_return std::string(text.get());
}

} // namespace

// The folder stays until the display, and with it this home, goes: the engine's network process
// closes the files of a session that ended at its leisure, and does not survive losing them before.
WebKitFixture::WebKitFixture() {
    std::string path = (std::filesystem::path(g_get_home_dir()) / "kelo-webkit.XXXXXX").string();
    if (!mkdtemp(path.data()))
        throw std::runtime_error("no temporary folder");
    folder = path;
}

WebKitFixture::~WebKitFixture() {
    endSession();
}

std::string WebKitFixture::page(std::string_view html, std::string_view extraHeaders) {
    return httpReply(
        html, std::string("Content-Type: text/html; charset=utf-8\r\n").append(extraHeaders));
}

std::unique_ptr<MisbehavingServer> WebKitFixture::site(std::map<std::string, std::string> pages) {
    return std::make_unique<MisbehavingServer>(
        identity, MisbehavingServer::answering([pages](const WireRequest& request) {
            const auto found = pages.find(request.target);
            return found == pages.end() ? httpReply("nothing here", "", "404 Not Found")
                                        : page(found->second);
        }));
}

webkit::WebKitSession& WebKitFixture::sessionFor(const Url& service) {
    if (!session) {
        webkit::WebKitSessionSettings settings{
            (folder / "data" / "web").string(),
            (folder / "cache").string(),
            std::make_shared<const http::TrustedAuthority>(authority.pem(),
                                                           std::vector{service.host()}),
            service,
            [this](const std::string& address) { openedOutside.push_back(address); },
            nullptr,
            {dialogs, pages},
            userChoice};
        session = std::make_unique<webkit::WebKitSession>(std::move(settings));
    }
    return *session;
}

void WebKitFixture::endSession() {
    view.reset();
    session.reset();
}

void WebKitFixture::trust(const Identity& given, const char* host) {
    const auto certificate = gobject::GObjectPointer<GTlsCertificate>::adopt(
        g_tls_certificate_new_from_pem(given.certificate.c_str(), -1, nullptr));
    webkit_network_session_allow_tls_certificate_for_host(
        session->networkSession(platform::WebsiteDataStore::persistentDefault).get(),
        certificate.get(), host);
}

void WebKitFixture::makeView(const Url& service, platform::WebViewConfiguration configuration) {
    view = std::make_shared<webkit::WebKitEmbeddedView>(sessionFor(service), platform::Rectangle{},
                                                        configuration);
    view->setNavigationDelegate(recorder);
}

WebKitWebView* WebKitFixture::native() const {
    return WEBKIT_WEB_VIEW(dynamic_cast<window::HostedWidget&>(*view).widget());
}

void WebKitFixture::load(const Url& url) {
    view->load(platform::UrlRequest{url});
}

void WebKitFixture::load(const Url& url, std::chrono::seconds timeout) {
    platform::UrlRequest request{url};
    request.timeout = timeout;
    view->load(request);
}

void WebKitFixture::open(const Url& url) {
    const auto before = recorder->finished.size();
    load(url);
    ASSERT_TRUE(waitForFinished(before + 1)) << "shown instead: " << pageText();
}

bool WebKitFixture::waitForFinished(std::size_t count) {
    return loop.runUntil([&] { return recorder->finished.size() >= count; });
}

bool WebKitFixture::waitForTitle(const std::string& title) {
    return loop.runUntil([&] {
        const char* const shown = webkit_web_view_get_title(native());
        return shown && title == shown && !webkit_web_view_is_loading(native());
    });
}

std::string WebKitFixture::evaluate(const std::string& script) {
    return loop.run(evaluated(native(), script));
}

void WebKitFixture::begin(const std::string& script) const {
    webkit_web_view_evaluate_javascript(native(), script.c_str(), -1, nullptr, nullptr, nullptr,
                                        nullptr, nullptr);
}

bool WebKitFixture::waitForQuestion(std::size_t count) {
    return loop.runUntil([&] { return dialogs->asked.size() >= count; });
}

bool WebKitFixture::waitForScript(const std::string& script, const std::string& result) {
    return loop.runUntil([&] { return evaluate(script) == result; });
}

} // namespace kelo::test
