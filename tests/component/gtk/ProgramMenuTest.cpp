#include "component/gtk/RunningProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/label.h>
#include <gtkmm/shortcutlabel.h>

#include <algorithm>

namespace kelo::tests {
namespace {

/// Whether the program starts at login, as a desktop keeps it.
struct Login : ObservableObject {
    Published<bool> on{*this, false};

    static gtk::HostSettings settings(const std::shared_ptr<Login>& login) {
        gtk::HostSettings given;
        given.version = [] { return std::string("1.4.2 (57)"); };
        given.loginStart = gtk::LoginStart{[login] { return login->on.get(); },
                                           [login](bool on) { login->on = on; }, login};
        return given;
    }
};

/// The second entry of the first menu.
constexpr const char* loginAction = "menu-0-1";

class ProgramMenu : public testing::Test {
protected:
    Gtk::Label* entry(const std::string& text) { return labelSaying(program.window("Kelo"), text); }
    void choose(const std::string& text) {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] { return entry(text); });
        program.click(*entry(text));
    }
    /// What the menu draws the check mark from.
    bool isChecked() {
        bool state = false;
        program.window("Kelo").get_application()->get_action_state(loginAction, state);
        return state;
    }
    void untilClosed() {
        RunningProgram::until("the window is closed",
                              [&] { return program.windowsOnScreen().size() == 1; });
    }
    static bool says(Gtk::Window& window, const std::string& text) {
        return std::ranges::count(textsIn(window), text) > 0;
    }

    std::shared_ptr<Login> login = std::make_shared<Login>();
    RunningProgram program{Login::settings(login)};
};

TEST_F(ProgramMenu, OpensTheWindowAboutTheProgramWhichSaysItsVersion) {
    program.run([&] {
        choose("About Kelo");
        auto& about = program.window("About Kelo");
        program.untilActive(about);
        EXPECT_TRUE(says(about, "Kelo"));
        EXPECT_TRUE(says(about, "Version 1.4.2 (57)"));
        program.screen.press(GDK_KEY_Escape);
        untilClosed();
    });
}

TEST_F(ProgramMenu, WindowsAreMadeOnceAndRaisedAfterwards) {
    program.run([&] {
        program.host.openAbout();
        program.host.openAbout();
        program.host.openShortcuts();
        program.host.openShortcuts();
        RunningProgram::settle();
        EXPECT_EQ(program.windowsOnScreen().size(), 3U);
    });
}

TEST_F(ProgramMenu, QuestionMarkOpensTheShortcutsOfEveryMenu) {
    program.run([&] {
        program.screen.press(GDK_KEY_question, {GDK_KEY_Control_L, GDK_KEY_Shift_L});
        auto& shortcuts = program.window("Keyboard Shortcuts");
        program.untilActive(shortcuts);
        for (const char* text : {"Kelo", "Settings…", "Quit", "Account", "Copy Address", "Page",
                                 "Caret in the text, on or off", "Everywhere", "Voice widget"})
            EXPECT_TRUE(says(shortcuts, text)) << text;
        std::vector<std::string> accelerators;
        for (auto* label : visibleIn<Gtk::ShortcutLabel>(shortcuts))
            accelerators.push_back(label->get_accelerator());
        EXPECT_EQ(accelerators,
                  (std::vector<std::string>{"<Control>comma", "<Control>question", "<Control>w",
                                            "<Control>q", "<Control>l", "F5", "<Alt>Left",
                                            "<Alt>Right", "<Alt>Home", "<Control>f", "<Control>p",
                                            "<Control>plus", "<Control>minus", "<Control>0", "F11",
                                            "F7", "F6", "<Control><Alt>"}));
        EXPECT_TRUE(says(shortcuts, "Alt"));
        program.screen.press(GDK_KEY_w, {GDK_KEY_Control_L});
        untilClosed();
    });
}

TEST_F(ProgramMenu, StartAtLoginIsTurnedOnAndOffAndShowsWhichItIs) {
    program.run([&] {
        EXPECT_FALSE(isChecked());
        choose("Start at Login");
        RunningProgram::until("it is on", [&] { return login->on.get(); });
        RunningProgram::until("the menu shows it", [&] { return isChecked(); });
        program.window("Kelo").get_application()->activate_action(loginAction);
        RunningProgram::until("it is off", [&] { return !login->on.get(); });
        RunningProgram::until("the menu shows it", [&] { return !isChecked(); });
    });
}

TEST(ProgramMenuWithoutLogin, OffersNoStartAtLogin) {
    RunningProgram program;
    program.run([&] {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] {
            return std::ranges::count(textsIn(program.window("Kelo")), "About Kelo") > 0;
        });
        EXPECT_EQ(std::ranges::count(textsIn(program.window("Kelo")), "Start at Login"), 0);
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] {
            return std::ranges::count(textsIn(program.window("Kelo")), "About Kelo") == 0;
        });
    });
}

} // namespace
} // namespace kelo::tests
