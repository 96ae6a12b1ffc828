#include "e2e/ProgramFixture.h"

#include <algorithm>

namespace kelo::e2e {

namespace {

constexpr std::chrono::seconds patience{30};

class MainWindow : public ProgramFixture {
protected:
    std::optional<rig::ScreenWindow> mainWindow() const {
        const auto windows = desktop().screen.windows.managed();
        const auto found =
            std::ranges::find(windows, kelo->identifier(), &rig::ScreenWindow::process);
        return found == windows.end() ? std::nullopt : std::optional(*found);
    }

    /// What happens when somebody starts Kelo once more: the second process hands over and ends.
    void startAgain() const {
        rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log");
        ASSERT_EQ(second.awaitExit(patience), 0) << second.printed();
    }
};

} // namespace

TEST_F(MainWindow, GivesItsContentTheSizeOfTheScene) {
    const rig::Wanted content{rig::Place::windows, {rig::Role::widget}, "WebKitWebView"};
    const rig::Area area = user.awaitDrawn(content);
    EXPECT_EQ(area.width, 1100);
    EXPECT_EQ(area.height, 760);
}

TEST_F(MainWindow, IsRaisedByASecondStart) {
    ASSERT_TRUE(mainWindow());
    // Something else takes the screen: Kelo's window goes to the taskbar.
    desktop().screen.windows.minimize(mainWindow()->identifier);
    desktop().tree.awaitThat("Kelo's window is not the active one", [&] {
        const auto active = desktop().screen.windows.active();
        return !active || active->process != kelo->identifier();
    });
    startAgain();
    desktop().tree.awaitThat("Kelo's window is the active one", [&] {
        const auto active = desktop().screen.windows.active();
        return active && active->process == kelo->identifier();
    });
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(MainWindow, ClosedLeavesTheProcessRunningAndComesBackWithItsPage) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    desktop().screen.windows.tellManager(mainWindow()->identifier, "_NET_CLOSE_WINDOW");
    desktop().tree.awaitThat("Kelo's window is gone", [&] { return !mainWindow(); });
    EXPECT_TRUE(kelo->isRunning());
    startAgain();
    desktop().tree.awaitThat("Kelo's window is back", [&] { return mainWindow().has_value(); });
    user.awaitSignedIn("Ada");
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(MainWindow, QuitInTheMenuEndsTheProcess) {
    user.chooseFromMenu("Kelo", "Quit");
    EXPECT_EQ(kelo->awaitExit(patience), 0) << kelo->printed();
}

} // namespace kelo::e2e
