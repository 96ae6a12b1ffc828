#include "component/gtk/RunningProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/togglebutton.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace kelo::tests {
namespace {

using permission::Answer;
using permission::Capability;

class PermissionsWindow : public testing::Test {
protected:
    void openByMenu() {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] {
            return labelSaying(program.window("Kelo"), "Permissions…") != nullptr;
        });
        program.click(*labelSaying(program.window("Kelo"), "Permissions…"));
        program.untilActive(window());
    }
    Gtk::Window& window() { return program.window("Permissions"); }
    Gtk::ToggleButton& choice(const std::string& name) {
        return dynamic_cast<Gtk::ToggleButton&>(*buttonNamed(window(), name));
    }
    std::vector<std::string> pressed() {
        std::vector<std::string> names;
        for (const char* const row : {"Microphone", "Camera", "Notifications"})
            for (const char* const answer : {"Ask", "Allow", "Don’t Allow"})
                if (const auto name = std::string(row) + ": " + answer; choice(name).get_active())
                    names.push_back(name);
        return names;
    }

    std::shared_ptr<permission::Permissions> permissions =
        std::make_shared<permission::Permissions>("", "");
    RunningProgram program{[this] {
        gtk::HostSettings settings;
        settings.permissions = permissions;
        return settings;
    }()};
};

TEST_F(PermissionsWindow, ShowsWhatIsRemembered) {
    permissions->remember(Capability::microphone, Answer::allowed);
    permissions->remember(Capability::notifications, Answer::denied);
    program.run([&] {
        openByMenu();
        EXPECT_EQ(pressed(), (std::vector<std::string>{"Microphone: Allow", "Camera: Ask",
                                                       "Notifications: Don’t Allow"}));
        EXPECT_EQ(permissions->answer(Capability::microphone), Answer::allowed);
    });
}

TEST_F(PermissionsWindow, TheKeyboardBeginsAtTheAnswerThatHolds) {
    permissions->remember(Capability::microphone, Answer::denied);
    program.run([&] {
        openByMenu();
        EXPECT_EQ(window().get_focus(), &choice("Microphone: Don’t Allow"));
    });
}

TEST_F(PermissionsWindow, ChangesTheAnswerByAClick) {
    permissions->remember(Capability::microphone, Answer::allowed);
    program.run([&] {
        openByMenu();
        program.click(choice("Microphone: Don’t Allow"));
        RunningProgram::until("the answer is changed", [&] {
            return permissions->answer(Capability::microphone) == Answer::denied;
        });
        program.click(choice("Microphone: Ask"));
        RunningProgram::until("the answer is changed", [&] {
            return permissions->answer(Capability::microphone) == Answer::ask;
        });
        EXPECT_EQ(permissions->answer(Capability::camera), Answer::ask);
    });
}

TEST_F(PermissionsWindow, FollowsWhatIsAnsweredElsewhere) {
    program.run([&] {
        openByMenu();
        permissions->remember(Capability::camera, Answer::denied);
        RunningProgram::until("the window shows it",
                              [&] { return choice("Camera: Don’t Allow").get_active(); });
        EXPECT_EQ(permissions->answer(Capability::camera), Answer::denied);
    });
}

TEST_F(PermissionsWindow, IsUsedByTheKeyboard) {
    program.run([&] {
        openByMenu();
        RunningProgram::until("a button has the keyboard",
                              [&] { return choice("Microphone: Ask").has_focus(); });
        program.screen.press(GDK_KEY_Right);
        program.screen.press(GDK_KEY_space);
        RunningProgram::until("the answer is changed", [&] {
            return permissions->answer(Capability::microphone) == Answer::allowed;
        });
        auto& shown = window();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the window is gone", [&] {
            const auto windows = program.windowsOnScreen();
            return std::find(windows.begin(), windows.end(), &shown) == windows.end();
        });
    });
}

TEST(PermissionsMenu, HasNoEntryWhereNothingCanBeAllowed) {
    RunningProgram program;
    program.run([&] {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] {
            return labelSaying(program.window("Kelo"), "Settings…") != nullptr;
        });
        EXPECT_EQ(labelSaying(program.window("Kelo"), "Permissions…"), nullptr);
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] {
            return labelSaying(program.window("Kelo"), "Settings…") == nullptr;
        });
    });
}

} // namespace
} // namespace kelo::tests
