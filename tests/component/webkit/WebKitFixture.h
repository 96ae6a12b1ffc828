#pragma once

#include "component/http/MisbehavingServer.h"
#include "component/http/TestAuthority.h"
#include "component/http/TestMainLoop.h"
#include "component/webkit/FakePageDialogs.h"
#include "linux/webkit/WebKitEmbeddedView.h"
#include "linux/window/HostedWidget.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelo::test {

/// Records the address of every finished navigation.
class NavigationRecorder final : public platform::NavigationDelegate {
public:
    void didFinishNavigation(platform::EmbeddedWebView& webView) override {
        const auto url = webView.url();
        finished.push_back(url ? url->absoluteString() : "");
    }
    std::vector<std::string> finished;
};

/// Real web views on a display, a service under an authority of the test's own, and folders that go
/// with the test.
class WebKitFixture : public testing::Test {
protected:
    static void SetUpTestSuite() { gtk_init(); }

    WebKitFixture();
    ~WebKitFixture() override;

    /// A server that shows these pages (target → HTML), 404 for others.
    std::unique_ptr<MisbehavingServer> site(std::map<std::string, std::string> pages);
    static std::string page(std::string_view html, std::string_view extraHeaders = "");

    /// Opens the session on first use; its service is the given server's origin.
    webkit::WebKitSession& sessionFor(const Url& service);
    void endSession();
    /// Has the engine take the identity for the host at once: in a frame it asks nobody.
    void trust(const Identity& given, const char* host);

    /// A new view that reports to the recorder.
    void makeView(const Url& service, platform::WebViewConfiguration configuration = {});
    WebKitWebView* native() const;

    void load(const Url& url);
    /// The same with a short timeout.
    void load(const Url& url, std::chrono::seconds timeout);
    /// Loads and waits until it finished, once more than before.
    void open(const Url& url);
    bool waitForFinished(std::size_t count);
    bool waitForTitle(const std::string& title);
    /// The result of a script in the page, as text.
    std::string evaluate(const std::string& script);
    /// Starts a script that perhaps waits for the user.
    void begin(const std::string& script) const;
    /// Waits until the pages have asked the user so often.
    bool waitForQuestion(std::size_t count = 1);
    bool waitForScript(const std::string& script, const std::string& result);
    std::string pageText() { return evaluate("document.body.innerText"); }

    TestMainLoop loop;
    TestAuthority authority;
    Identity identity = authority.issue();
    std::filesystem::path folder;
    std::vector<std::string> openedOutside;
    std::shared_ptr<FakePageDialogs> dialogs = std::make_shared<FakePageDialogs>();
    std::shared_ptr<window::OpenPages> pages = std::make_shared<window::OpenPages>();
    /// How the user of the next session decides; nobody is asked, unless it is set.
    webkit::UserChoice userChoice;
    std::unique_ptr<webkit::WebKitSession> session;
    std::shared_ptr<platform::EmbeddedWebView> view;
    std::shared_ptr<NavigationRecorder> recorder = std::make_shared<NavigationRecorder>();
};

} // namespace kelo::test
