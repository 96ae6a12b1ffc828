#include "component/gtk/PageFixture.h"

#include <gdk/gdkkeysyms.h>
#include <gmock/gmock.h>
#include <gtkmm/eventcontrollerkey.h>

namespace kelo::tests {
namespace {

using testing::ElementsAre;

/// The "View" menu of the main window, its keys, and the mouse.
class ViewCommands : public PageFixture {
protected:
    std::vector<std::string>& done() { return page().pageControls.done; }
    void press(unsigned key, const std::vector<screen::KeySymbol>& modifiers = {}) {
        program.screen.press(key, modifiers);
        RunningProgram::settle();
    }
    std::vector<std::string> openMenu() {
        program.click(*labelSaying(main(), "View"));
        RunningProgram::until("the menu is open", [&] {
            const auto texts = textsIn(main());
            return std::ranges::count(texts, "Full Screen") == 1;
        });
        return textsIn(main());
    }
};

TEST_F(ViewCommands, HaveTheKeysOfBrowsers) {
    program.run([&] {
        untilPageHasKeyboard();
        press(GDK_KEY_F5);
        press(GDK_KEY_r, {GDK_KEY_Control_L});
        EXPECT_EQ(page().reloads, 2);
        page().pageControls.setHistory(true, true);
        press(GDK_KEY_Left, {GDK_KEY_Alt_L});
        press(GDK_KEY_Right, {GDK_KEY_Alt_L});
        press(GDK_KEY_r, {GDK_KEY_Control_L, GDK_KEY_Shift_L});
        press(GDK_KEY_p, {GDK_KEY_Control_L});
        EXPECT_THAT(done(), ElementsAre("back", "forward", "reload from server", "print"));
        press(GDK_KEY_Home, {GDK_KEY_Alt_L});
        EXPECT_EQ(page().returns, 1);
    });
}

TEST_F(ViewCommands, StandInTheMenuWithTheirKeys) {
    program.run([&] {
        const auto texts = openMenu();
        for (const auto* text : {"Reload", "Back", "Forward", "Start Page", "Find…", "Print…",
                                 "Zoom In", "Zoom Out", "Usual Size", "Full Screen", "F5", "F11"})
            EXPECT_EQ(std::ranges::count(texts, text), 1) << text;
        program.click(*labelSaying(main(), "Print…"));
        RunningProgram::until("the command ran", [&] { return !done().empty(); });
        EXPECT_THAT(done(), ElementsAre("print"));
    });
}

TEST_F(ViewCommands, LeadNowhereWhereThereIsNoPage) {
    program.run([&] {
        untilPageHasKeyboard();
        press(GDK_KEY_Left, {GDK_KEY_Alt_L});
        press(GDK_KEY_Right, {GDK_KEY_Alt_L});
        EXPECT_THAT(done(), ElementsAre());
        page().pageControls.setHistory(true, false);
        press(GDK_KEY_Left, {GDK_KEY_Alt_L});
        press(GDK_KEY_Right, {GDK_KEY_Alt_L});
        EXPECT_THAT(done(), ElementsAre("back"));
    });
}

TEST_F(ViewCommands, ZoomStepByStepWithinItsLimits) {
    program.run([&] {
        untilPageHasKeyboard();
        const auto& factor = page().pageControls.factor;
        press(GDK_KEY_plus, {GDK_KEY_Control_L, GDK_KEY_Shift_L});
        EXPECT_DOUBLE_EQ(factor, 1.1);
        press(GDK_KEY_equal, {GDK_KEY_Control_L});
        EXPECT_DOUBLE_EQ(factor, 1.25);
        press(GDK_KEY_KP_Add, {GDK_KEY_Control_L});
        EXPECT_DOUBLE_EQ(factor, 1.5);
        press(GDK_KEY_minus, {GDK_KEY_Control_L});
        EXPECT_DOUBLE_EQ(factor, 1.25);
        press(GDK_KEY_0, {GDK_KEY_Control_L});
        EXPECT_DOUBLE_EQ(factor, 1);
        for (int step = 0; step < 14; ++step)
            program.screen.press(GDK_KEY_KP_Subtract, {GDK_KEY_Control_L});
        RunningProgram::settle();
        EXPECT_DOUBLE_EQ(factor, 0.5);
        for (int step = 0; step < 14; ++step)
            program.screen.press(GDK_KEY_KP_Add, {GDK_KEY_Control_L});
        RunningProgram::settle();
        EXPECT_DOUBLE_EQ(factor, 3);
    });
}

TEST_F(ViewCommands, ZoomFollowsTheWheelWhileControlIsHeld) {
    program.run([&] {
        untilPageHasKeyboard();
        const auto box = program.boxOf(page().area);
        const int x = box.x + box.width / 2;
        const int y = box.y + box.height / 2;
        // The display tells nothing of the first turn after the pointer came.
        const auto turnUntil = [&](unsigned button, const std::function<bool()>& condition) {
            for (int turns = 0; turns < 5 && !condition(); ++turns) {
                program.screen.hold(x, y, button, GDK_KEY_Control_L);
                program.screen.letGo(button, GDK_KEY_Control_L);
                RunningProgram::settle();
            }
            return condition();
        };
        constexpr unsigned wheelUp = 4;
        constexpr unsigned wheelDown = 5;
        const auto& factor = page().pageControls.factor;
        EXPECT_TRUE(turnUntil(wheelUp, [&] { return factor > 1; }));
        const double larger = factor;
        EXPECT_TRUE(turnUntil(wheelDown, [&] { return factor < larger; }));
    });
}

TEST_F(ViewCommands, WheelAloneLeavesTheSize) {
    program.run([&] {
        untilPageHasKeyboard();
        const auto box = program.boxOf(page().area);
        for (int turns = 0; turns < 5; ++turns) {
            program.screen.hold(box.x + 50, box.y + 50, 4, GDK_KEY_Shift_L);
            program.screen.letGo(4, GDK_KEY_Shift_L);
        }
        RunningProgram::settle();
        EXPECT_DOUBLE_EQ(page().pageControls.factor, 1);
    });
}

TEST_F(ViewCommands, FullScreenLeavesThePageAlone) {
    program.run([&] {
        untilPageHasKeyboard();
        press(GDK_KEY_F11);
        RunningProgram::until("the page fills the screen", [&] {
            const auto box = program.boxOf(page().area);
            return box.x == 0 && box.y == 0 && box.width == program.screen.width() &&
                   box.height == program.screen.height();
        });
        untilPageHasKeyboard();
        press(GDK_KEY_F11);
        RunningProgram::until("the window is as before", [&] {
            return program.boxOf(page().area).width < program.screen.width();
        });
    });
}

TEST_F(ViewCommands, ReachAPageThatDoesNotAnswer) {
    program.run([&] {
        untilPageHasKeyboard();
        // It takes every key, and does nothing with it.
        const auto keys = Gtk::EventControllerKey::create();
        keys->signal_key_pressed().connect([](guint, guint, Gdk::ModifierType) { return true; },
                                           false);
        page().area.add_controller(keys);
        press(GDK_KEY_F5);
        EXPECT_EQ(page().reloads, 0) << "the page may take it";
        page().setHangs(true);
        press(GDK_KEY_F5);
        EXPECT_EQ(page().reloads, 1);
    });
}

TEST_F(ViewCommands, DoNothingInAClosedWindow) {
    program.run([&] {
        main().close();
        page().pageControls.setHistory(true, true);
        EXPECT_THAT(done(), ElementsAre());
        program.host.openWindow("main");
        RunningProgram::until("it appears again", [&] { return program.app.count("appear") == 2; });
        untilPageHasKeyboard();
        press(GDK_KEY_Left, {GDK_KEY_Alt_L});
        EXPECT_THAT(done(), ElementsAre("back"));
    });
}

} // namespace
} // namespace kelo::tests
