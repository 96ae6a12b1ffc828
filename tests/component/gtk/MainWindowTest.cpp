#include "component/gtk/RunningProgram.h"
#include "linux/gtk/kit/ProgramWindow.h"
#include "testing/screen/OtherProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace kelo::tests {
namespace {

constexpr Color pageColor{255, 0, 255};

TEST(MainWindow, IsOnItsWayToTheScreenBeforeItsContentIsComputed) {
    RunningProgram program;
    program.run([] {});
    EXPECT_EQ(program.app.count("page after its window"), 1);
    EXPECT_EQ(program.app.count("page before a window"), 0);
    EXPECT_EQ(program.app.events.front(), "body");
    EXPECT_EQ(program.status, 0);
}

TEST(MainWindow, GivesNothingTheKeyboardBeforeThePage) {
    RunningProgram program;
    program.run([] {});
    EXPECT_EQ(program.app.count("page before the focus"), 1);
    EXPECT_EQ(program.app.count("page after the focus"), 0);
}

TEST(MainWindow, OpensWithTheDefaultSizeOfItsContent) {
    RunningProgram program;
    program.run([&] {
        EXPECT_EQ(program.app.page->area.get_width(), 1100);
        EXPECT_EQ(program.app.page->area.get_height(), 760);
        EXPECT_EQ(program.windowsOnScreen().size(), 1U);
    });
}

TEST(MainWindow, CarriesItsIconForWindowManagers) {
    RunningProgram program;
    program.run([&] {
        GdkSurface* const surface = program.window("Kelo").get_surface()->gobj();
        EXPECT_EQ(program.screen.iconSizes(surface), (std::vector{48, 128}));
    });
}

TEST(MainWindow, BelongsToTheProgramsDesktopEntry) {
    RunningProgram program;
    program.run([&] {
        GdkSurface* const surface = program.window("Kelo").get_surface()->gobj();
        EXPECT_EQ(program.screen.programName(surface), "app.kelo.Kelo");
    });
}

TEST(MainWindow, ShrinksToItsMinimumAndNoFurther) {
    RunningProgram program;
    program.run([&] {
        auto& area = program.app.page->area;
        const auto page = program.boxOf(area);
        const int x = page.x + page.width - 100;
        const int y = page.y + page.height - 100;
        // The window manager resizes a window from any point inside it. It needs a moment to grab
        // the mouse, so the pointer keeps moving.
        program.screen.hold(x, y, 3, GDK_KEY_Alt_L);
        int moved = 0;
        RunningProgram::until("the window is small", [&] {
            if (moved < page.height - 150)
                moved += 20;
            program.screen.moveTo(x - moved - moved / 2, y - moved + moved % 3);
            return area.get_width() <= 800 && area.get_height() <= 600;
        });
        for (int further = 0; further < 100; further += 10)
            program.screen.moveTo(x - moved - moved / 2 - further, y - moved - further);
        program.screen.letGo(3, GDK_KEY_Alt_L);
        program.untilDrawn(program.window("Kelo"));
        EXPECT_EQ(program.app.page->area.get_width(), 800);
        EXPECT_EQ(program.app.page->area.get_height(), 600);
    });
}

TEST(MainWindow, WebViewReachesEveryEdgeOfTheContent) {
    RunningProgram program;
    program.run([&] {
        auto& window = program.window("Kelo");
        const auto content = program.boxOf(*window.get_child());
        const auto page = program.boxOf(program.app.page->area);
        EXPECT_EQ(page.x, content.x);
        EXPECT_EQ(page.y, content.y);
        EXPECT_EQ(page.width, content.width);
        EXPECT_EQ(page.height, content.height);
        const int right = page.x + page.width - 1;
        const int bottom = page.y + page.height - 1;
        EXPECT_EQ(program.screen.colorAt(page.x, page.y), pageColor);
        EXPECT_EQ(program.screen.colorAt(right, page.y), pageColor);
        EXPECT_EQ(program.screen.colorAt(page.x, bottom), pageColor);
        EXPECT_EQ(program.screen.colorAt(right, bottom), pageColor);
    });
}

TEST(MainWindow, KeyboardIsThePagesFromTheStart) {
    RunningProgram program;
    program.run([&] {
        RunningProgram::until("the page has the keyboard",
                              [&] { return program.app.page->area.has_focus(); });
    });
}

TEST(MainWindow, ClosingItLeavesTheProgramRunningAndReopeningShowsTheSameWebView) {
    RunningProgram program;
    program.run([&] {
        GtkWidget* before = program.app.page->widget();
        program.screen.press(GDK_KEY_w, {GDK_KEY_Control_L});
        RunningProgram::until("no window is open",
                              [&] { return Gtk::Window::list_toplevels().empty(); });
        EXPECT_EQ(gtk_widget_get_parent(before), nullptr);
        EXPECT_EQ(program.app.count("appear"), 1);

        program.host.openWindow("main");
        RunningProgram::until("it appears again", [&] { return program.app.count("appear") == 2; });
        program.untilActive(program.window("Kelo"));
        EXPECT_EQ(program.app.page->widget(), before);
        EXPECT_TRUE(program.app.page->area.get_mapped());
        EXPECT_EQ(program.app.page->area.get_width(), 1100);
        EXPECT_EQ(program.app.count("body"), 1);
    });
}

TEST(MainWindow, ReopenedInTheTurnItWasClosedInItShowsTheWebView) {
    RunningProgram program;
    program.run([&] {
        program.window("Kelo").close();
        program.host.openWindow("main");
        RunningProgram::until("it appears again", [&] { return program.app.count("appear") == 2; });
        RunningProgram::settle();
        EXPECT_TRUE(program.app.page->area.get_mapped());
        EXPECT_EQ(program.windowsOnScreen().size(), 1U);
    });
}

TEST(MainWindow, LastWindowEndsTheProgramWhenTheDelegateSaysSo) {
    RunningProgram program;
    program.app.terminatesAfterLastWindow = true;
    program.runToItsOwnEnd([&] { program.window("Kelo").close(); });
    EXPECT_EQ(program.status, 0); // comes back by itself
}

TEST(MainWindow, QuitKeyEndsTheProgram) {
    RunningProgram program;
    program.runToItsOwnEnd([&] { program.screen.press(GDK_KEY_q, {GDK_KEY_Control_L}); });
    EXPECT_EQ(program.status, 0);
}

TEST(MainWindow, OpeningItTwiceRaisesTheOpenOne) {
    RunningProgram program;
    program.run([&] {
        auto& first = program.window("Kelo");
        program.host.openWindow("main");
        program.host.openWindow("no such group");
        RunningProgram::settle();
        EXPECT_EQ(program.windowsOnScreen(), std::vector<Gtk::Window*>{&first});
        EXPECT_EQ(program.app.count("appear"), 1);
    });
}

TEST(MainWindow, IsTheKeyWindowAndGoneFromTheListOnceClosed) {
    RunningProgram program;
    program.run([&] {
        const auto windows = program.host.windows();
        ASSERT_EQ(windows.size(), 1U);
        EXPECT_EQ(program.host.keyWindow(), windows.front());
        program.window("Kelo").close();
        EXPECT_EQ(program.host.keyWindow(), nullptr);
        EXPECT_TRUE(program.host.windows().empty());
        RunningProgram::settle();
        EXPECT_EQ(gtk::WindowHandle::resolve(windows.front()), nullptr);
        EXPECT_NE(gtk::WindowHandle::resolve(program.host.makePlainWindow()), nullptr);
    });
}

TEST(MainWindow, IsDrawnAgainOnceAfterSeveralChanges) {
    RunningProgram program;
    program.run([&] {
        const int before = program.app.count("content");
        program.app.state->onLogin = true;
        program.app.state->busy = true;
        program.app.state->error = "No.";
        EXPECT_EQ(program.app.count("content"), before) << "drawn before the change was made";
        RunningProgram::settle();
        EXPECT_EQ(program.app.count("content"), before + 1);
    });
}

TEST(MainWindow, ClosedItIsNotDrawnAnyMore) {
    RunningProgram program;
    program.run([&] {
        program.window("Kelo").close();
        const int before = program.app.count("content");
        program.app.state->onLogin = true;
        RunningProgram::settle();
        EXPECT_EQ(program.app.count("content"), before);
    });
}

TEST(MainWindow, ClosedItIsNotDrawnForAnEarlierChangeEither) {
    RunningProgram program;
    program.run([&] {
        const int before = program.app.count("content");
        program.app.state->onLogin = true;
        program.window("Kelo").close();
        RunningProgram::settle();
        EXPECT_EQ(program.app.count("content"), before);
    });
}

TEST(MainWindow, ProgramRunsOnWithoutAWindow) {
    RunningProgram program;
    bool ranOn = false;
    std::shared_ptr<Timer> timer;
    // The body returns at once: the toolkit looks for a reason to go on when it has nothing to do.
    program.runToItsOwnEnd([&] {
        program.window("Kelo").close();
        timer = program.mainLoop.scheduleTimer(std::chrono::milliseconds(200), [&] {
            ranOn = true;
            program.host.terminate();
        });
    });
    timer->invalidate();
    EXPECT_TRUE(ranOn);
}

TEST(MainWindow, ActivatedTheProgramComesInFrontOfOthers) {
    RunningProgram program;
    program.run([&] {
        auto& window = program.window("Kelo");
        const screen::OtherProgram other({40, 40, 300, 200});
        RunningProgram::until("the other program has the keyboard",
                              [&] { return other.hasKeyboard() && !window.is_active(); });
        program.host.activate();
        program.untilActive(window);
        EXPECT_FALSE(other.hasKeyboard());
    });
}

TEST(MainWindow, ActivatedWithoutAWindowTheProgramOpensNone) {
    RunningProgram program;
    program.run([&] {
        program.window("Kelo").close();
        program.host.activate();
        RunningProgram::settle();
        EXPECT_TRUE(program.windowsOnScreen().empty());
    });
}

TEST(MainWindow, TheKeysOfTheToolkitsInspectorOpenNothing) {
    RunningProgram program;
    program.run([&] {
        program.untilActive(program.window("Kelo"));
        for (const unsigned key : {GDK_KEY_i, GDK_KEY_d}) {
            program.screen.press(key, {GDK_KEY_Control_L, GDK_KEY_Shift_L});
            RunningProgram::settle();
            // A question whether to open it would come before the settings.
            program.screen.press(GDK_KEY_comma, {GDK_KEY_Control_L});
            program.untilActive(program.window("Settings"));
            EXPECT_EQ(program.windowsOnScreen().size(), 2U);
            program.screen.press(GDK_KEY_w, {GDK_KEY_Control_L});
            program.untilActive(program.window("Kelo"));
        }
    });
}

TEST(MainWindow, MaximisedItFillsTheScreenWithoutAnEdge) {
    RunningProgram program;
    program.run([&] {
        auto& window = program.window("Kelo");
        window.maximize();
        RunningProgram::until("it fills the screen", [&] {
            return program.boxOf(window).width == program.screen.width();
        });
        program.untilDrawn(window);
        const auto page = program.boxOf(program.app.page->area);
        EXPECT_EQ(page.x, 0);
        EXPECT_EQ(page.width, program.screen.width());
        EXPECT_EQ(page.y + page.height, program.screen.height());
    });
}

TEST(MainWindow, AsksForTheLeastSizeOfItsContent) {
    RunningProgram program;
    program.run([&] {
        auto& window = program.window("Kelo");
        program.untilDrawn(window);
        const auto around = program.boxOf(window);
        const auto page = program.boxOf(program.app.page->area);
        const auto limits = program.screen.sizeLimits(window.get_surface()->gobj());
        EXPECT_EQ(limits.minimumWidth, 800 + around.width - page.width);
        EXPECT_EQ(limits.minimumHeight, 600 + around.height - page.height);
    });
}

} // namespace
} // namespace kelo::tests
