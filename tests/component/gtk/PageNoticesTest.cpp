#include "component/gtk/DesktopAnswers.h"

#include <gtest/gtest.h>

#include <string>

namespace kelo::tests {
namespace {

class PageNotices : public testing::Test {
protected:
    void show(const std::string& identifier, const std::string& title,
              const std::string& body = "") {
        const auto before = desktop.shown.size();
        program.host.pageNotifications()->show(identifier, {title, body}, [this] { ++clicks; });
        RunningProgram::until("it is shown", [&] { return desktop.shown.size() > before; });
        // The toolkit can replace and withdraw it only after it has the desktop's answer.
        awaitAnswers(desktop);
    }

    std::string tokenOfWindow() {
        return program.screen.activationToken(program.window("Kelo").get_surface()->gobj());
    }
    void untilWindowHasToken(const std::string& token) {
        RunningProgram::until("the window has " + token, [&] { return tokenOfWindow() == token; });
    }
    void closeWindow() {
        program.window("Kelo").close();
        RunningProgram::until("the window is gone",
                              [&] { return program.windowsOnScreen().empty(); });
    }

    DesktopOnBus desktop{/*hasTray=*/true};
    RunningProgram program;
    int clicks = 0;
};

TEST_F(PageNotices, ShowTheTextAsItIsAndTheProgramsIcon) {
    program.run([&] {
        show("one", "A title", "a & <b>bold</b>");
        EXPECT_EQ(desktop.shown.back(), "A title");
        EXPECT_EQ(desktop.body, "a ＆ ‹b›bold‹/b›");
        EXPECT_EQ(desktop.icon, "app.kelo.Kelo");
    });
}

TEST_F(PageNotices, ClickOpensTheWindowAndReachesThePage) {
    program.run([&] {
        show("one", "A title");
        closeWindow();
        desktop.press("default");
        RunningProgram::until("the page was told", [&] { return clicks == 1; });
        program.untilActive(program.window("Kelo"));
    });
}

TEST_F(PageNotices, ButtonDoesWhatAClickDoes) {
    program.run([&] {
        show("one", "A title");
        closeWindow();
        ASSERT_EQ(desktop.buttons.size(), 4U);
        EXPECT_EQ(desktop.buttons[3], "Show Window");
        desktop.press(desktop.buttons[2]);
        RunningProgram::until("the page was told", [&] { return clicks == 1; });
        program.untilActive(program.window("Kelo"));
    });
}

TEST_F(PageNotices, ClickBringsItsActivationTokenToTheWindow) {
    program.run([&] {
        show("one", "A title");
        desktop.press("default", "kelo-token-1");
        untilWindowHasToken("kelo-token-1");
        EXPECT_EQ(clicks, 1);
        show("two", "A title");
        closeWindow();
        desktop.press("default", "kelo-token-2");
        untilWindowHasToken("kelo-token-2");
    });
}

TEST_F(PageNotices, ClickOnAnotherProgramsLeavesNoToken) {
    program.run([&] {
        show("one", "A title");
        desktop.press("default", "kelo-token-1");
        untilWindowHasToken("kelo-token-1");
        desktop.pressOnAnother("anothers-token");
        awaitAnswers(desktop);
        program.host.openWindow("main");
        RunningProgram::settle();
        EXPECT_NE(tokenOfWindow(), "anothers-token");
    });
}

TEST_F(PageNotices, ClickThatThePortalTellsOfBringsItsActivationToken) {
    program.run([&] {
        show("one", "A title");
        desktop.activateAction("app.kelo.Kelo", "/app/kelo/Kelo", "page-notification", {"one"},
                               "portal-token");
        untilWindowHasToken("portal-token");
        EXPECT_EQ(clicks, 1);
    });
}

TEST_F(PageNotices, WithdrawnOneGoesFromTheDesktop) {
    program.run([&] {
        show("one", "First");
        const auto first = desktop.lastNumber;
        show("two", "Second");
        const auto second = desktop.lastNumber;
        program.host.pageNotifications()->withdraw("one");
        RunningProgram::until("it is gone", [&] { return desktop.closed == 1; });
        EXPECT_EQ(desktop.lastClosed, first);
        program.host.pageNotifications()->withdraw("one");
        program.host.pageNotifications()->withdraw("never shown");
        program.host.pageNotifications()->withdraw("two");
        RunningProgram::until("the other is gone", [&] { return desktop.closed == 2; });
        EXPECT_EQ(desktop.lastClosed, second);
    });
}

TEST_F(PageNotices, GoWithTheProgram) {
    program.run([&] { show("one", "First"); });
    RunningProgram::until("it is gone", [&] { return desktop.closed == 1; });
}

TEST_F(PageNotices, WithoutARunningProgramThereAreNone) {
    program.host.pageNotifications()->show("one", {"A title", ""}, [] {});
    program.host.pageNotifications()->withdraw("one");
    EXPECT_TRUE(desktop.shown.empty());
}

} // namespace
} // namespace kelo::tests
