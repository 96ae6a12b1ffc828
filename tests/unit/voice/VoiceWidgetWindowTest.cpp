#include "voice/VoiceWidgetWindow.h"

#include "fakes/ScopedTestDesktop.h"
#include "service/ServiceEndpoints.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

using platform::MediaCaptureType;
using platform::PermissionDecision;
using Calls = std::vector<std::string>;

struct VoiceWidgetWindowTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::shared_ptr<voice::VoiceWidgetWindow> widget = std::make_shared<voice::VoiceWidgetWindow>();

    fakes::FakePanel& panel() { return *desktop.panels.at(0); }
    fakes::FakeWebView& page() { return *desktop.webViews.at(0); }
    platform::EventPointer key(platform::KeyCode code,
                               const std::shared_ptr<platform::Window>& window) {
        return desktop.monitors.keyDown(code, window);
    }
};

TEST_F(VoiceWidgetWindowTest, NothingIsBuiltBeforeTheFirstShow) {
    EXPECT_FALSE(widget->isVisible());
    widget->hide();
    EXPECT_TRUE(desktop.made.empty());
    EXPECT_TRUE(desktop.monitors.locals.empty());
}

TEST_F(VoiceWidgetWindowTest, PanelAndWebViewAreBuiltOnceInThisOrder) {
    for (int count = 0; count < 3; ++count) {
        widget->show();
        widget->hide();
    }
    EXPECT_EQ(desktop.made, (Calls{"panel", "web view"}));
    EXPECT_EQ(desktop.monitors.locals.size(), 1u);
    EXPECT_EQ(desktop.monitors.locals.at(0).first, 0x400u);
}

TEST_F(VoiceWidgetWindowTest, PanelIsAskedForWithTheseValues) {
    widget->show();
    const auto& asked = panel().description;
    EXPECT_EQ(asked.contentRectangle, (platform::Rectangle{0, 0, 640, 620}));
    EXPECT_EQ(asked.styleMask, 128u);
    EXPECT_EQ(static_cast<int>(asked.backing), 2);
    EXPECT_FALSE(asked.defer);
    EXPECT_TRUE(asked.canBecomeKeyWindow);
    EXPECT_FALSE(asked.canBecomeMainWindow);
    EXPECT_EQ(static_cast<int>(asked.level), 3);
    EXPECT_TRUE(asked.floatingPanel);
    EXPECT_FALSE(asked.hidesOnDeactivate);
    EXPECT_FALSE(asked.opaque);
    EXPECT_EQ(asked.backgroundColor, platform::BackgroundColor::clear);
    EXPECT_TRUE(asked.hasShadow);
    EXPECT_EQ(asked.collectionBehavior, 257u);
}

TEST(KeyablePanelTest, MayHaveTheKeyboardAndIsNeverTheMainWindow) {
    fakes::ScopedTestDesktop desktop;
    platform::PanelDescription description;
    description.contentRectangle = {1, 2, 3, 4};
    description.canBecomeKeyWindow = false;
    description.canBecomeMainWindow = true;
    const voice::KeyablePanel panel(description);
    const auto& asked = desktop.panels.at(0)->description;
    EXPECT_TRUE(asked.canBecomeKeyWindow);
    EXPECT_FALSE(asked.canBecomeMainWindow);
    EXPECT_EQ(asked.contentRectangle, (platform::Rectangle{1, 2, 3, 4}));
    EXPECT_EQ(panel.window(), desktop.panels.at(0));
    EXPECT_TRUE(desktop.panels.at(0)->calls.empty());
}

TEST_F(VoiceWidgetWindowTest, WebViewFillsThePanelWithRoundedCorners) {
    widget->show();
    EXPECT_EQ(panel().content.webView, desktop.webViews.at(0));
    EXPECT_EQ(panel().content.autoresizingMask, 18u);
    EXPECT_EQ(panel().content.cornerRadius, 18);
    EXPECT_TRUE(panel().content.masksToBounds);
    EXPECT_EQ(page().frame, (platform::Rectangle{0, 0, 640, 620}));
}

TEST_F(VoiceWidgetWindowTest, WebViewSharesTheStoreAndHasOneHandlerAndNoUserScript) {
    widget->show();
    const auto& configuration = page().configuration;
    EXPECT_EQ(configuration.websiteDataStore, platform::WebsiteDataStore::persistentDefault);
    EXPECT_TRUE(configuration.allowsContentJavaScript);
    EXPECT_TRUE(configuration.allowsAutoplay);
    EXPECT_TRUE(configuration.linksOpenInBrowser);
    EXPECT_TRUE(configuration.userScripts.empty());
    ASSERT_EQ(configuration.scriptMessageHandlers.size(), 1u);
    EXPECT_EQ(configuration.scriptMessageHandlers[0].name, "kelo");
    EXPECT_EQ(page().interfaceDelegate.lock(), widget);
    EXPECT_FALSE(page().navigationDelegate.lock());
}

TEST_F(VoiceWidgetWindowTest, EachShowFromHiddenLoadsTheWidgetPageAnew) {
    widget->show();
    ASSERT_EQ(page().loads.size(), 1u);
    EXPECT_EQ(page().loads[0].url.absoluteString(), service::widgetURL().absoluteString());
    EXPECT_EQ(page().loads[0].timeout, std::chrono::seconds(60));
    EXPECT_EQ(page().loads[0].cachePolicy, platform::CachePolicy::useProtocolCachePolicy);
    widget->hide();
    EXPECT_EQ(page().loads.size(), 1u);
    widget->show();
    EXPECT_EQ(page().loads.size(), 2u);
}

TEST_F(VoiceWidgetWindowTest, ShowWhileVisibleOnlyBringsThePanelToTheFront) {
    widget->show();
    panel().calls.clear();
    desktop.screen = platform::Screen{{100, 100, 800, 600}};
    widget->show();
    EXPECT_EQ(page().loads.size(), 1u);
    EXPECT_EQ(panel().calls, (Calls{"makeKeyAndOrderFront", "makeFirstResponder"}));
}

TEST_F(VoiceWidgetWindowTest, PageIsLoadedBeforeThePanelAppears) {
    widget->show();
    widget->hide();
    std::size_t loadsWhenShown = 0;
    panel().onOrderFront = [&] { loadsWhenShown = page().loads.size(); };
    widget->show();
    EXPECT_EQ(loadsWhenShown, 2u);
}

TEST_F(VoiceWidgetWindowTest, PanelIsPlacedAtTheBottomCentreAndThenShown) {
    desktop.screen = platform::Screen{{0, 25, 1440, 875}};
    widget->show();
    EXPECT_EQ(panel().frame(), (platform::Rectangle{400, 41, 640, 620}));
    EXPECT_EQ(panel().calls,
              (Calls{"setFrameOrigin", "makeKeyAndOrderFront", "makeFirstResponder"}));
    EXPECT_EQ(panel().firstResponder, desktop.webViews.at(0));
}

TEST_F(VoiceWidgetWindowTest, EachShowFromHiddenPlacesThePanelAnew) {
    widget->show();
    widget->hide();
    desktop.screen = platform::Screen{{-1280, 300, 1280, 1000}};
    widget->show();
    EXPECT_EQ(panel().frame(), (platform::Rectangle{-960, 316, 640, 620}));
}

TEST_F(VoiceWidgetWindowTest, ChangedMonitorsPlaceTheShownPanelAnew) {
    widget->show();
    panel().calls.clear();
    desktop.screen = platform::Screen{{-1280, 300, 1280, 1000}};
    panel().screensChanged();
    EXPECT_EQ(panel().frame(), (platform::Rectangle{-960, 316, 640, 620}));
    EXPECT_EQ(panel().calls, Calls{"setFrameOrigin"});
    widget->hide();
    panel().calls.clear();
    panel().screensChanged();
    EXPECT_EQ(panel().calls, Calls{});
}

TEST_F(VoiceWidgetWindowTest, HiddenByTheDesktopItListensNoLonger) {
    int closes = 0;
    widget->onClose = [&] { ++closes; };
    widget->show();
    panel().visible = false;
    panel().closed();
    EXPECT_FALSE(desktop.webViews.at(0)->allowsMediaCapture);
    EXPECT_EQ(closes, 1);
    widget->show();
    EXPECT_TRUE(desktop.webViews.at(0)->allowsMediaCapture);
}

TEST_F(VoiceWidgetWindowTest, WithoutAMainScreenThePanelStaysWhereItWas) {
    desktop.screen.reset();
    widget->show();
    EXPECT_EQ(panel().frame(), (platform::Rectangle{0, 0, 640, 620}));
    EXPECT_TRUE(widget->isVisible());
}

TEST_F(VoiceWidgetWindowTest, ShowDoesNotActivateTheProgram) {
    widget->show();
    EXPECT_TRUE(desktop.application().calls.empty());
}

TEST_F(VoiceWidgetWindowTest, HideOrdersThePanelOutAndThenRunsOnClose) {
    widget->show();
    bool visibleAtClose = true;
    int closes = 0;
    widget->onClose = [&] {
        visibleAtClose = widget->isVisible();
        ++closes;
    };
    widget->hide();
    EXPECT_FALSE(visibleAtClose);
    EXPECT_EQ(closes, 1);
    EXPECT_EQ(panel().calls.back(), "orderOut");
    EXPECT_EQ(page().loads.size(), 1u);
}

TEST_F(VoiceWidgetWindowTest, OnCloseRunsHoweverTheWidgetIsHidden) {
    int closes = 0;
    widget->onClose = [&] { ++closes; };
    widget->show();
    key(53, desktop.panels.at(0));
    EXPECT_EQ(closes, 1) << "Escape";
    widget->show();
    page().post("kelo", std::string("close"));
    EXPECT_EQ(closes, 2) << "the page's message";
    widget->show();
    EXPECT_EQ(closes, 2) << "showing it is no close";
    widget->hide();
    EXPECT_EQ(closes, 3);
}

TEST_F(VoiceWidgetWindowTest, HideBeforeTheFirstShowRunsOnCloseOnly) {
    int closes = 0;
    widget->onClose = [&] { ++closes; };
    widget->hide();
    EXPECT_EQ(closes, 1);
    EXPECT_TRUE(desktop.panels.empty());
}

TEST_F(VoiceWidgetWindowTest, EscapeInThePanelHidesItAndGoesNoFurther) {
    widget->show();
    EXPECT_FALSE(key(53, desktop.panels.at(0)));
    EXPECT_FALSE(widget->isVisible());
}

TEST_F(VoiceWidgetWindowTest, OtherKeysInThePanelGoOn) {
    widget->show();
    for (const platform::KeyCode code :
         {platform::KeyCode{0}, platform::KeyCode{36}, platform::key::other})
        EXPECT_TRUE(key(code, desktop.panels.at(0)));
    EXPECT_TRUE(widget->isVisible());
}

TEST_F(VoiceWidgetWindowTest, EscapeElsewhereIsNotTouched) {
    widget->show();
    const auto other = std::make_shared<platform::Window>();
    EXPECT_TRUE(key(53, other));
    EXPECT_TRUE(key(53, nullptr));
    EXPECT_TRUE(widget->isVisible());
}

TEST_F(VoiceWidgetWindowTest, EventGoesOnAsTheVeryEventReceived) {
    widget->show();
    const auto event = std::make_shared<const platform::Event>(
        platform::Event{platform::event_mask::keyDown, 0, 53});
    EXPECT_EQ(desktop.monitors.locals.at(0).second(event), event);
}

TEST_F(VoiceWidgetWindowTest, WhenTheWidgetIsGoneOnlyEscapeWithoutAWindowIsConsumed) {
    widget->show();
    widget.reset();
    EXPECT_TRUE(key(53, desktop.panels.at(0)));
    EXPECT_TRUE(key(36, nullptr));
    EXPECT_FALSE(key(53, nullptr));
}

TEST_F(VoiceWidgetWindowTest, WithoutAMonitorEscapeDoesNotClose) {
    desktop.monitors.offersLocal = false;
    widget->show();
    EXPECT_TRUE(key(53, desktop.panels.at(0)));
    EXPECT_TRUE(widget->isVisible());
}

TEST_F(VoiceWidgetWindowTest, ServiceHostGetsMicrophoneAndCameraAlike) {
    widget->show();
    const std::string host(service::relyingPartyIdentifier());
    for (const auto type : {MediaCaptureType::microphone, MediaCaptureType::camera,
                            MediaCaptureType::cameraAndMicrophone})
        EXPECT_EQ(page().requestMedia(host, type), PermissionDecision::grant);
}

TEST_F(VoiceWidgetWindowTest, NeitherSchemeNorPortNorTypeDecides) {
    widget->show();
    for (const platform::SecurityOrigin& origin :
         {platform::SecurityOrigin{"http", std::string(service::relyingPartyIdentifier()), 8080},
          platform::SecurityOrigin{"", std::string(service::relyingPartyIdentifier()), 1}}) {
        int answers = 0;
        widget->requestMediaCapturePermission(page(), origin, MediaCaptureType::camera,
                                              [&](PermissionDecision decision) {
                                                  EXPECT_EQ(decision, PermissionDecision::grant);
                                                  ++answers;
                                              });
        EXPECT_EQ(answers, 1) << origin.scheme;
    }
    for (const auto type : {MediaCaptureType::microphone, MediaCaptureType::camera,
                            MediaCaptureType::cameraAndMicrophone})
        EXPECT_EQ(page().requestMedia("example.org", type), PermissionDecision::deny);
}

TEST_F(VoiceWidgetWindowTest, EveryOtherHostIsDenied) {
    widget->show();
    const std::string host(service::relyingPartyIdentifier());
    std::string otherCase = host;
    otherCase[0] = static_cast<char>(std::toupper(otherCase[0]));
    for (const auto& other : {"voice." + host, host + ".", otherCase, host + ".example.org",
                              std::string("example.org"), std::string()})
        EXPECT_EQ(page().requestMedia(other, MediaCaptureType::microphone),
                  PermissionDecision::deny)
            << other;
}

TEST_F(VoiceWidgetWindowTest, CloseMessageHidesThePanel) {
    widget->show();
    page().post("kelo", std::string("close"));
    EXPECT_FALSE(widget->isVisible());
}

TEST_F(VoiceWidgetWindowTest, EveryOtherMessageIsIgnored) {
    widget->show();
    for (const char* const text :
         {"Close", "CLOSE", "closed", "close ", "close\n", " close", "please close", "clos", ""}) {
        page().post("kelo", std::string(text));
        EXPECT_TRUE(widget->isVisible()) << text;
    }
    for (const platform::ScriptValue& body :
         {platform::ScriptValue{1.0}, platform::ScriptValue{0.0}, platform::ScriptValue{true},
          platform::ScriptValue{}}) {
        page().post("kelo", body);
        EXPECT_TRUE(widget->isVisible()) << body.index();
    }
}

TEST_F(VoiceWidgetWindowTest, MessagesToOtherHandlersAreIgnored) {
    widget->show();
    for (const char* const name : {"other", "kelo2", "Kelo", "kel", ""}) {
        page().post(name, std::string("close"));
        // Even if the platform were to deliver one.
        widget->didReceiveScriptMessage(page(), {name, std::string("close")});
        EXPECT_TRUE(widget->isVisible()) << name;
    }
}

TEST_F(VoiceWidgetWindowTest, ItsOwnWebViewDoesNotKeepTheWidgetAlive) {
    widget->show();
    const std::weak_ptr<voice::VoiceWidgetWindow> weak = widget;
    widget.reset();
    EXPECT_TRUE(weak.expired());
    page().post("kelo", std::string("close"));
    EXPECT_TRUE(panel().visible);
    EXPECT_FALSE(page().requestMedia(std::string(service::relyingPartyIdentifier()),
                                     MediaCaptureType::microphone));
}

} // namespace
} // namespace kelo
