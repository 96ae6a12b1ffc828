#include "component/webkit/WebKitFixture.h"
#include "demo/pages/EmbeddedPages.h"

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
        const std::string widget(demo::embeddedPage("widget.html"));
        peer = site({{"/widget", widget},
                     {"/widget?stranger",
                      widget + std::string(demo::embeddedPage("stranger-frame.html")) +
                          "<script>addEventListener('message', (event) => window.told = event.data)"
                          "</script>"},
                     {"/stranger", std::string(demo::embeddedPage("stranger.html")) + pressing},
                     {"/assets/widget.js", std::string(demo::embeddedPage("widget.js"))}});
        makeView(peer->url());
        view->setUserInterfaceDelegate(granter);
        gtk_window_set_child(GTK_WINDOW(window), GTK_WIDGET(native()));
        gtk_window_present(GTK_WINDOW(window));
        open(peer->url("/widget"));
    }
    // Presses both buttons, one after the other, and hands on what the frame then shows.
    static constexpr const char* pressing = R"(<script>if (parent === top) {
  const shown = [];
  new MutationObserver(() => {
    shown.push(status.textContent);
    if (shown.length === 1) document.getElementById('close').click();
    if (shown.length === 2) top.postMessage(shown.join(' '), '*');
  }).observe(status, {childList: true});
  document.getElementById('listen').click();
}</script>)";

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

TEST_F(Microphone, StrangersFrameInTheWidgetPageIsRefused) {
    open(peer->url("/widget?stranger"));
    EXPECT_TRUE(waitForScript("window.told",
                              "The stranger was refused. The stranger found nobody to tell."))
        << evaluate("window.told");
    EXPECT_TRUE(granter->types.empty());
    evaluate("document.getElementById('microphone').click()");
    EXPECT_TRUE(waitForScript("meter.getAttribute('aria-valuenow') > 50", "true"));
}

TEST_F(Microphone, IsLiveUntilThePageStopsIt) {
    const auto isLive = [this] {
        return webkit_web_view_get_microphone_capture_state(native()) ==
               WEBKIT_MEDIA_CAPTURE_STATE_ACTIVE;
    };
    EXPECT_FALSE(isLive());
    evaluate("document.getElementById('microphone').click()");
    EXPECT_TRUE(loop.runUntil(isLive));
    evaluate("document.getElementById('microphone').click()");
    EXPECT_TRUE(loop.runUntil([&] { return !isLive(); }));
    evaluate("document.getElementById('microphone').click()");
    EXPECT_TRUE(loop.runUntil(isLive));
    open(peer->url("/widget"));
    EXPECT_TRUE(loop.runUntil([&] { return !isLive(); }));
}

TEST_F(Microphone, CaptureThatRunsEndsForGoodWhenItIsForbidden) {
    const auto state = [this] { return webkit_web_view_get_microphone_capture_state(native()); };
    evaluate("document.getElementById('microphone').click()");
    ASSERT_TRUE(loop.runUntil([&] { return state() == WEBKIT_MEDIA_CAPTURE_STATE_ACTIVE; }));
    view->setAllowsMediaCapture(false);
    EXPECT_TRUE(loop.runUntil([&] { return state() == WEBKIT_MEDIA_CAPTURE_STATE_NONE; }));
    view->setAllowsMediaCapture(true);
    EXPECT_TRUE(waitForScript("meter.getAttribute('aria-valuenow') < 5", "true"));
    EXPECT_EQ(state(), WEBKIT_MEDIA_CAPTURE_STATE_NONE);
}

/// Whether a page may speak before anybody has clicked in it.
class Autoplay : public WebKitFixture {
protected:
    void show(bool allowed) {
        peers.push_back(site({{"/", "<script>const sound = new AudioContext();"
                                    "const tell = () => document.title = sound.state;"
                                    "sound.onstatechange = tell; tell();</script>"}}));
        platform::WebViewConfiguration configuration;
        configuration.allowsAutoplay = allowed;
        makeView(peers.back()->url(), configuration);
        open(peers.back()->url("/"));
    }

    std::vector<std::unique_ptr<MisbehavingServer>> peers;
};

TEST_F(Autoplay, SoundStartsByItselfWhereItIsAllowed) {
    show(true);
    EXPECT_TRUE(waitForTitle("running"));
}

TEST_F(Autoplay, SoundWaitsForAClickElsewhere) {
    show(false);
    const auto waits = view;
    ASSERT_TRUE(waitForTitle("suspended"));
    // The sound of a page that was opened later tells that there was time enough.
    show(true);
    ASSERT_TRUE(waitForTitle("running"));
    view = waits;
    EXPECT_EQ(evaluate("document.title"), "suspended");
}

} // namespace kelo::test
