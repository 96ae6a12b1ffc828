#include "component/webkit/WebKitFixture.h"
#include "demo/EmbeddedPages.h"

namespace kelo::test {

using platform::MediaCaptureType;
using platform::PermissionDecision;
using platform::SecurityOrigin;

namespace {

/// Grants what the host asks for, as the voice widget does.
class HostGranter final : public platform::UserInterfaceDelegate {
public:
    void requestMediaCapturePermission(platform::EmbeddedWebView&, const SecurityOrigin& origin,
                                       MediaCaptureType type, DecisionHandler decide) override {
        types.push_back(type);
        decide(origin.host == "localhost" ? PermissionDecision::grant : PermissionDecision::deny);
    }
    std::vector<MediaCaptureType> types;
};

} // namespace

/// The demo service's own widget page, with a microphone that hears a tone.
class Microphone : public WebKitFixture {
protected:
    void SetUp() override {
        peer = site({{"/widget", std::string(demo::embeddedPage("widget.html"))},
                     {"/assets/widget.js", std::string(demo::embeddedPage("widget.js"))}});
        makeView(peer->url());
        view->setUserInterfaceDelegate(granter);
        gtk_window_set_child(GTK_WINDOW(window), GTK_WIDGET(native()));
        gtk_window_present(GTK_WINDOW(window));
        open(peer->url("/widget"));
    }
    void TearDown() override { gtk_window_destroy(GTK_WINDOW(window)); }

    GtkWidget* window = gtk_window_new();

    std::shared_ptr<HostGranter> granter = std::make_shared<HostGranter>();
    std::unique_ptr<MisbehavingServer> peer;
};

TEST_F(Microphone, MeterOfTheWidgetPageFollowsTheTone) {
    evaluate("document.getElementById('microphone').click()");
    EXPECT_TRUE(waitForScript("document.getElementById('status').textContent", "Listening."))
        << evaluate("document.getElementById('status').textContent");
    EXPECT_TRUE(waitForScript("meter.getAttribute('aria-valuenow') > 50", "true"));
}

} // namespace kelo::test
