#include "app/KeloApp.h"
#include "fakes/ScopedTestDesktop.h"
#include "log/DebugLog.h"
#include "service/ServiceEndpoints.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelo {
namespace {

struct KeloAppTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    fakes::FakeApplication& application = desktop.application();
    app::KeloApp app;

    ~KeloAppTest() override { dropSpawnedTasks(); }

    void launch() {
        application.run(app);
        desktop.loop.runUntilIdle();
    }
    /// How often the voice controller was started, by its log line.
    long starts() {
        const std::string& log = desktop.fileSystem().files[std::string(log::debugLogPath)];
        const std::string line = "VoiceController.start — widget = web /widget host\n";
        long count = 0;
        for (auto at = log.find(line); at != std::string::npos; at = log.find(line, at + 1))
            ++count;
        return count;
    }
    platform::MenuItem accountItem() {
        const auto& menus = application.mainWindowGroup().commands;
        return std::get<platform::MenuItem>(menus.at(0).items.body().at(0));
    }
};

TEST_F(KeloAppTest, ConstructionMakesNoStateObject) {
    EXPECT_TRUE(desktop.webViews.empty());
    EXPECT_TRUE(desktop.ephemeralSessions.empty());
}

TEST_F(KeloAppTest, ReadingTheScenesMakesNoStateObjectEither) {
    app.body();
    EXPECT_TRUE(desktop.webViews.empty());
    EXPECT_TRUE(desktop.ephemeralSessions.empty());
    EXPECT_EQ(starts(), 0);
}

TEST_F(KeloAppTest, ScenesAreMainWindowMenuBarExtraAndSettingsInThisOrder) {
    const auto scenes = app.body();
    ASSERT_EQ(scenes.size(), 3u);
    const auto& main = std::get<platform::WindowGroup>(scenes[0]);
    EXPECT_EQ(main.identifier, "main");
    EXPECT_EQ(main.defaultSize, (platform::Size{1100, 760}));
    const auto& extra = std::get<platform::MenuBarExtra>(scenes[1]);
    EXPECT_EQ(extra.title, "Kelo");
    EXPECT_EQ(extra.systemImage, "brain");
    EXPECT_TRUE(std::holds_alternative<platform::SettingsScene>(scenes[2]));
}

TEST_F(KeloAppTest, NewMainWindowHasTheDefaultSize) {
    launch();
    EXPECT_EQ(application.windowAt(0).size, (platform::Size{1100, 760}));
}

TEST_F(KeloAppTest, AccountMenuHasItsOneItem) {
    launch();
    const auto& menus = application.mainWindowGroup().commands;
    ASSERT_EQ(menus.size(), 1u);
    EXPECT_EQ(menus[0].title, "Account");
    EXPECT_EQ(menus[0].items.body().size(), 1u);
    EXPECT_EQ(accountItem().label, "Register a Passkey on This Mac…");
    EXPECT_FALSE(accountItem().shortcut);
}

TEST_F(KeloAppTest, AccountItemIsDisabledWhileARegistrationRuns) {
    launch();
    desktop.webViews.at(0)->cookies = {{"session-token", "x", "localhost"}};
    int redraws = 0;
    std::vector<Observation> observations;
    for (const auto& object : application.mainWindowGroup().commands[0].items.observed())
        observations.push_back(object->observe([&] { ++redraws; }));
    accountItem().action();
    desktop.loop.runUntilIdle();
    desktop.sharedSession.holdNext();
    desktop.alerts().answer(1000, "code");
    desktop.loop.runUntilIdle();
    EXPECT_FALSE(accountItem().enabled);
    EXPECT_GT(redraws, 0);
    desktop.sharedSession.held->resume({{}, 500});
    redraws = 0;
    desktop.loop.runUntilIdle();
    EXPECT_TRUE(accountItem().enabled);
    EXPECT_GT(redraws, 0);
}

TEST_F(KeloAppTest, AccountItemReadsTheCookiesOfTheOneWebModel) {
    launch();
    accountItem().action();
    desktop.loop.runUntilIdle();
    const auto& calls = desktop.webViews.at(0)->calls;
    EXPECT_NE(std::find(calls.begin(), calls.end(), "get all cookies"), calls.end());
    EXPECT_EQ(desktop.alerts().shown.at(0).messageText, "Bevestig registratie");
}

TEST_F(KeloAppTest, WebModelIsMadeBeforeTheAuthenticatorAndTheWindow) {
    const auto scenes = app.body();
    std::get<platform::WindowGroup>(scenes[0]).content.body();
    EXPECT_EQ(desktop.made, (std::vector<std::string>{"web view", "session"}));
    EXPECT_EQ(desktop.webViews.at(0)->loads.size(), 1u);
    EXPECT_TRUE(application.open.empty());
}

TEST_F(KeloAppTest, AnotherMainWindowMakesNoNewStateObjects) {
    launch();
    // A desktop that shows several windows of a group reads the content once for each.
    const auto& group = application.mainWindowGroup();
    const auto another = group.content.body();
    const auto observed = group.content.observed();
    group.onAppear();
    EXPECT_EQ(desktop.webViews.size(), 1u);
    EXPECT_EQ(desktop.ephemeralSessions.size(), 1u);
    EXPECT_EQ(another.webView, application.windowAt(0).content.webView);
    EXPECT_EQ(observed, group.content.observed());
}

TEST_F(KeloAppTest, OpenMainWindowIsRaisedAndDoesNotAppearAgain) {
    launch();
    application.openWindow("main");
    EXPECT_EQ(application.open.size(), 1u);
    EXPECT_EQ(starts(), 1);
}

TEST_F(KeloAppTest, WindowFollowsThePathOfTheWebModel) {
    launch();
    EXPECT_FALSE(application.windowAt(0).content.overlay);
    desktop.webViews.at(0)->finishNavigation("https://host/login");
    desktop.loop.runUntilIdle();
    EXPECT_EQ(application.windowAt(0).redrawings, 1);
    EXPECT_TRUE(application.windowAt(0).content.overlay);
}

TEST_F(KeloAppTest, WindowFollowsTheSignInOfTheAuthenticator) {
    launch();
    desktop.webViews.at(0)->finishNavigation("https://host/login");
    desktop.loop.runUntilIdle();
    auto& session = *desktop.ephemeralSessions.at(0);
    session.holdNext();
    const auto overlay = [&] { return application.windowAt(0).content.overlay.value(); };
    overlay().button.action();
    desktop.loop.runUntilIdle();
    EXPECT_EQ(overlay().button.label, "Waiting for passkey…");
    EXPECT_FALSE(overlay().button.enabled);
    session.held->resume({{}, 500});
    desktop.loop.runUntilIdle();
    EXPECT_EQ(overlay().button.label, "Sign in with passkey");
    EXPECT_TRUE(overlay().button.enabled);
    ASSERT_TRUE(overlay().text);
    EXPECT_EQ(overlay().text->text, "Could not start passkey login.");
}

TEST_F(KeloAppTest, SettingsSceneShowsTheVersionAndTheService) {
    desktop.bundle.dictionary = {{"CFBundleShortVersionString", std::string("1.4.2")},
                                 {"CFBundleVersion", std::string("57")}};
    const auto scenes = app.body();
    const auto& scene = std::get<platform::SettingsScene>(scenes.at(2));
    const auto pane = scene.content.body();
    EXPECT_EQ(pane.size, (platform::Size{360, 140}));
    ASSERT_EQ(pane.rows.size(), 2u);
    EXPECT_EQ(pane.rows[0].label, "Version");
    EXPECT_EQ(pane.rows[0].value, "1.4.2 (57)");
    EXPECT_EQ(pane.rows[1].label, "Backend");
    EXPECT_EQ(pane.rows[1].value, service::relyingPartyIdentifier());
    desktop.bundle.dictionary = std::nullopt;
    EXPECT_EQ(scene.content.body().rows.at(0).value, "? (?)") << "read anew at each drawing";
}

TEST_F(KeloAppTest, VoiceStartsOnlyWhenAMainWindowHasAppeared) {
    app.body();
    EXPECT_EQ(starts(), 0);
    launch();
    EXPECT_EQ(starts(), 1);
}

TEST_F(KeloAppTest, ClosingTheLastWindowLeavesTheProgramRunning) {
    launch();
    application.closeWindow(application.windows().at(0));
    EXPECT_TRUE(application.open.empty());
    EXPECT_FALSE(application.terminated);
    EXPECT_FALSE(app.applicationDelegate().applicationShouldTerminateAfterLastWindowClosed());
}

TEST_F(KeloAppTest, ReopenedMainWindowStartsVoiceOnceMore) {
    launch();
    application.closeWindow(application.windows().at(0));
    application.openWindow("main");
    EXPECT_EQ(starts(), 2);
    EXPECT_EQ(desktop.webViews.size(), 1u);
}

TEST_F(KeloAppTest, HotkeyDoesNothingBeforeTheFirstMainWindow) {
    app.body();
    EXPECT_TRUE(desktop.monitors.globals.empty());
    launch();
    EXPECT_EQ(desktop.monitors.globals.size(), 1u);
}

TEST_F(KeloAppTest, WidgetActionTogglesTheOneWidgetThatTheChordToggles) {
    launch();
    ASSERT_EQ(application.actions.size(), 2u);
    EXPECT_EQ(application.actions[0].name, "widget");
    application.actions[0].action();
    ASSERT_EQ(desktop.panels.size(), 1u);
    EXPECT_TRUE(desktop.panels[0]->visible);
    desktop.monitors.flagsElsewhere(0xC0000);
    desktop.monitors.flagsElsewhere(0);
    EXPECT_FALSE(desktop.panels[0]->visible);
    EXPECT_EQ(desktop.panels.size(), 1u);
}

TEST_F(KeloAppTest, WidgetActionWorksWithoutAnyMainWindow) {
    app.actions().at(0).action();
    EXPECT_TRUE(desktop.panels.at(0)->visible);
    EXPECT_EQ(starts(), 0);
}

TEST_F(KeloAppTest, WidgetHasAWebViewOfItsOwn) {
    launch();
    app.actions().at(0).action();
    EXPECT_EQ(desktop.webViews.size(), 2u);
}

} // namespace
} // namespace kelo
