#include "component/gtk/DesktopAnswers.h"
#include "component/gtk/RunningProgram.h"

#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelo::tests {
namespace {

void closeWindow(RunningProgram& program) {
    program.window("Kelo").close();
    RunningProgram::settle();
}

/// The toolkit can withdraw a notice only after it has the desktop's answer.
void awaitNotice(const DesktopOnBus& desktop) {
    RunningProgram::until("the notice is shown", [&] { return !desktop.shown.empty(); });
    awaitAnswers(desktop);
}

TEST(StayingNotice, SaysOnceThatTheProgramKeepsRunning) {
    const test::TemporaryFolder folder;
    gtk::HostSettings settings;
    settings.stateFile = (folder / "windows").string();
    DesktopOnBus desktop(/*hasTray=*/false);
    for (int start = 0; start < 2; ++start) {
        RunningProgram program(settings);
        program.run([&] {
            closeWindow(program);
            awaitNotice(desktop);
            EXPECT_EQ(desktop.shown, std::vector<std::string>{"Kelo keeps running"});
            program.host.openWindow("main");
            program.untilActive(program.window("Kelo"));
            closeWindow(program);
            EXPECT_EQ(desktop.shown.size(), 1U);
        });
    }
}

TEST(StayingNotice, GoesWithTheNextWindow) {
    DesktopOnBus desktop(/*hasTray=*/false);
    RunningProgram program;
    program.run([&] {
        closeWindow(program);
        awaitNotice(desktop);
        EXPECT_EQ(desktop.closed, 0);
        program.host.openWindow("main");
        RunningProgram::until("the notice is gone", [&] { return desktop.closed == 1; });
    });
}

TEST(StayingNotice, BringsItsActivationTokenToTheWindow) {
    DesktopOnBus desktop(/*hasTray=*/false);
    RunningProgram program;
    program.run([&] {
        closeWindow(program);
        awaitNotice(desktop);
        desktop.press("default", "kelo-token");
        RunningProgram::until("the window has it", [&] {
            return program.screen.activationToken(program.window("Kelo").get_surface()->gobj()) ==
                   "kelo-token";
        });
    });
}

TEST(StayingNotice, OpensTheWindowByAButtonWhereAClickDoesNothing) {
    DesktopOnBus desktop(/*hasTray=*/false);
    RunningProgram program;
    program.run([&] {
        closeWindow(program);
        awaitNotice(desktop);
        ASSERT_EQ(desktop.buttons.size(), 6U);
        EXPECT_EQ(desktop.buttons[3], "Show Window");
        desktop.press(desktop.buttons[2]);
        program.untilActive(program.window("Kelo"));
    });
}

TEST(StayingNotice, EndsTheProgramByItsButton) {
    DesktopOnBus desktop(/*hasTray=*/false);
    RunningProgram program;
    program.runToItsOwnEnd([&] {
        closeWindow(program);
        awaitNotice(desktop);
        ASSERT_EQ(desktop.buttons.size(), 6U);
        EXPECT_EQ(desktop.buttons[5], "Quit");
        desktop.press(desktop.buttons[4]);
    });
    EXPECT_EQ(program.status, 0);
}

/// Closes the window on a desktop with a list of tray items, and lets what comes of it happen.
void closeWhereItemsAreListed(const DesktopOnBus& desktop) {
    RunningProgram program;
    program.run([&] {
        closeWindow(program);
        RunningProgram::until("the tray was asked for",
                              [&] { return desktop.questionsForTray == 1; });
        // Three questions to the bus follow at most, and the notice.
        for (int trip = 0; trip < 5; ++trip)
            awaitAnswers(desktop);
        const bool isShown = !desktop.shown.empty();
        program.host.openWindow("main");
        // The toolkit must have done with the notice when the program ends.
        if (isShown)
            RunningProgram::until("the notice is gone", [&] { return desktop.closed == 1; });
    });
}

TEST(StayingNotice, IsNotShownWhereATrayShowsTheProgram) {
    DesktopOnBus desktop(/*hasTray=*/true);
    closeWhereItemsAreListed(desktop);
    EXPECT_TRUE(desktop.shown.empty());
}

TEST(StayingNotice, IsShownWhereAPlasmaListsItemsWithoutATray) {
    for (const char* const daemon : {"org.kde.kded5", "org.kde.kded6"}) {
        DesktopOnBus desktop(/*hasTray=*/true);
        desktop.take(daemon);
        closeWhereItemsAreListed(desktop);
        EXPECT_EQ(desktop.shown, std::vector<std::string>{"Kelo keeps running"}) << daemon;
    }
}

TEST(StayingNotice, IsNotShownWhereATrayOfPlasmaShowsTheProgram) {
    DesktopOnBus desktop(/*hasTray=*/true);
    desktop.take("org.kde.kded6");
    desktop.take("org.kde.StatusNotifierHost-117");
    closeWhereItemsAreListed(desktop);
    EXPECT_TRUE(desktop.shown.empty());
}

// A program of Plasma on another desktop, whose tray need not have a name.
TEST(StayingNotice, IsNotShownWhereATrayBesidePlasmasDaemonShowsTheProgram) {
    DesktopOnBus desktop(/*hasTray=*/true);
    const DesktopOnBus plasma(/*hasTray=*/false);
    plasma.take("org.kde.kded6");
    closeWhereItemsAreListed(desktop);
    EXPECT_TRUE(desktop.shown.empty());
}

} // namespace
} // namespace kelo::tests
