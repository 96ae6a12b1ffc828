#include "component/gtk/RunningProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/label.h>

namespace kelo::tests {
namespace {

constexpr const char* command = "Register a Passkey on This Mac…";

class MainMenu : public testing::Test {
protected:
    /// The visible label with the text; null when there is none.
    Gtk::Label* entry(const std::string& text) {
        for (auto* label : visibleIn<Gtk::Label>(program.window("Kelo")))
            if (label->get_text().raw() == text)
                return label;
        return nullptr;
    }
    void openAccountMenu() {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the first menu is open", [&] { return entry("Settings…"); });
        program.screen.press(GDK_KEY_Right);
        RunningProgram::until("the next menu is open", [&] { return entry(command); });
    }

    RunningProgram program;
};

TEST_F(MainMenu, OpensWithF10AndRunsACommandWithEnter) {
    program.run([&] {
        openAccountMenu();
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("the command ran",
                              [&] { return program.app.count("register") == 1; });
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
    });
}

TEST_F(MainMenu, OpensWithTheMouse) {
    program.run([&] {
        program.click(*entry("Account"));
        RunningProgram::until("the menu is open", [&] { return entry(command); });
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
        EXPECT_EQ(program.app.count("register"), 0);
    });
}

TEST_F(MainMenu, LeftWithEscapeItGivesTheKeyboardBackToThePage) {
    program.run([&] {
        openAccountMenu();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
        RunningProgram::until("the page has the keyboard",
                              [&] { return program.app.page->area.has_focus(); });
    });
}

TEST_F(MainMenu, LeftWithEscapeItGivesTheKeyboardBackToThePanelThatHadIt) {
    program.run([&] {
        program.app.state->onLogin = true;
        RunningProgram::settle();
        auto* button = buttonNamed(program.window("Kelo"), "Sign in with passkey");
        button->grab_focus();
        openAccountMenu();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the button has the keyboard", [&] { return button->has_focus(); });
    });
}

TEST_F(MainMenu, CommandFollowsThePublishedValueAlsoWhileTheMenuIsOpen) {
    program.run([&] {
        openAccountMenu();
        EXPECT_TRUE(entry(command)->is_sensitive());
        program.app.state->registering = true;
        RunningProgram::until("it is greyed out", [&] { return !entry(command)->is_sensitive(); });
        program.screen.press(GDK_KEY_Return);
        program.click(*entry(command));
        program.app.state->registering = false;
        RunningProgram::until("it is back", [&] { return entry(command)->is_sensitive(); });
        EXPECT_EQ(program.app.count("register"), 0);
        // An open menu holds the keyboard of the display, also of the next test's program.
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
    });
}

TEST_F(MainMenu, ClosesAndQuits) {
    program.runToItsOwnEnd([&] {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] { return entry("Quit"); });
        program.click(*entry("Quit"));
    });
    EXPECT_EQ(program.status, 0);
}

} // namespace
} // namespace kelo::tests
