#include "app/MenuBarContent.h"

#include "app/KeloApp.h"
#include "fakes/ScopedTestDesktop.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

using platform::MenuItem;

struct MenuBarContentTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    fakes::FakeApplication& application = desktop.application();
    const platform::Menu menu = app::MenuBarContent().body();

    const MenuItem& item(std::size_t index) const { return std::get<MenuItem>(menu.at(index)); }
};

TEST_F(MenuBarContentTest, HasItsSixEntriesInThisOrder) {
    ASSERT_EQ(menu.size(), 6u);
    EXPECT_EQ(item(0).label, "Open Kelo");
    EXPECT_TRUE(std::holds_alternative<platform::MenuSeparator>(menu[1]));
    EXPECT_EQ(item(2).label, "Check for Updates…");
    EXPECT_EQ(std::get<platform::SettingsLink>(menu[3]).label, "Settings…");
    EXPECT_TRUE(std::holds_alternative<platform::MenuSeparator>(menu[4]));
    EXPECT_EQ(item(5).label, "Quit Kelo");
}

TEST_F(MenuBarContentTest, EveryItemIsEnabledAndOnlyQuitHasAShortcut) {
    for (const std::size_t index : {0u, 2u, 5u})
        EXPECT_TRUE(item(index).enabled);
    EXPECT_FALSE(item(0).shortcut);
    EXPECT_FALSE(item(2).shortcut);
    ASSERT_TRUE(item(5).shortcut);
    EXPECT_EQ(item(5).shortcut->key, "q");
    EXPECT_EQ(item(5).shortcut->modifier, platform::KeyModifier::command);
}

TEST_F(MenuBarContentTest, OpenBringsTheProgramToTheFrontAndThenOpensTheMainWindow) {
    app::KeloApp app;
    application.run(app);
    application.calls.clear();
    item(0).action();
    EXPECT_EQ(application.calls, (std::vector<std::string>{"activate", "open main"}));
    EXPECT_EQ(application.open.size(), 1u);
}

TEST_F(MenuBarContentTest, OpenAfterTheMainWindowWasClosedStartsTheHotkeyAgain) {
    app::KeloApp app;
    application.run(app);
    application.closeWindow(application.windows().at(0));
    ASSERT_EQ(desktop.monitors.globals.size(), 1u);
    item(0).action();
    EXPECT_EQ(application.open.size(), 1u);
    EXPECT_EQ(desktop.monitors.globals.size(), 2u);
}

TEST_F(MenuBarContentTest, QuitTerminatesTheProgram) {
    item(5).action();
    EXPECT_TRUE(application.terminated);
}

TEST_F(MenuBarContentTest, IsWhatTheMenuBarExtraShows) {
    app::KeloApp app;
    const auto scenes = app.body();
    const auto& extra = std::get<platform::MenuBarExtra>(scenes.at(1));
    EXPECT_EQ(extra.content.body().size(), menu.size());
    EXPECT_FALSE(extra.content.observed) << "the same at every opening";
}

} // namespace
} // namespace kelo
