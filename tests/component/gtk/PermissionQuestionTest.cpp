#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/ConfirmationGuard.h"
#include "linux/gtk/dialogs/GtkPermissionAsker.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "testing/screen/OtherProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/eventcontrollerkey.h>
#include <gtkmm/eventcontrollerlegacy.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::tests {
namespace {

using permission::Capability;

class PermissionQuestion : public testing::Test {
protected:
    void ask(std::vector<Capability> capabilities = {Capability::microphone},
             const std::string& host = "assistant.example.com") {
        program.untilActive(program.window("Kelo"));
        asked = asker.ask(GTK_WIDGET(program.app.page->area.gobj()),
                          {host, std::move(capabilities)}, [this](std::optional<bool> isAllowed) {
                              asked.reset();
                              answers.push_back(!isAllowed ? "none" : *isAllowed ? "yes" : "no");
                          });
        auto keys = Gtk::EventControllerKey::create();
        keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
        keys->signal_key_released().connect(
            [this](guint, guint, Gdk::ModifierType) { ++released; });
        dialog().add_controller(keys);
        auto buttons = Gtk::EventControllerLegacy::create();
        buttons->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
        buttons->signal_event().connect(
            [this](const Glib::RefPtr<const Gdk::Event>& event) {
                clicks += event->get_event_type() == Gdk::Event::Type::BUTTON_RELEASE ? 1 : 0;
                return false;
            },
            false);
        dialog().add_controller(buttons);
        program.untilActive(dialog());
    }
    static Gtk::Window& dialog() { return *gtk::ModalWindow::topmost(); }
    void passDeadTime() { time += gtk::ConfirmationGuard::deadTime; }
    void press(unsigned key) {
        const int before = released;
        program.screen.press(key);
        RunningProgram::until("the key has come", [&] { return released > before; });
        RunningProgram::settle();
    }
    void click(const std::string& button) {
        const int before = clicks;
        program.click(*buttonNamed(dialog(), button));
        RunningProgram::until("the click has come", [&] { return clicks > before; });
        RunningProgram::settle();
    }
    void untilAnswered(const std::string& answer) {
        RunningProgram::until("the user was heard", [&] { return !answers.empty(); });
        EXPECT_EQ(answers, std::vector{answer});
        EXPECT_EQ(gtk::ModalWindow::topmost(), nullptr);
    }
    void expectOpen() const {
        EXPECT_TRUE(answers.empty());
        EXPECT_NE(gtk::ModalWindow::topmost(), nullptr);
        EXPECT_TRUE(asked);
    }

    RunningProgram program;
    std::chrono::steady_clock::time_point time{std::chrono::hours(1)};
    gtk::GtkPermissionAsker asker{[this] { return time; }};
    std::unique_ptr<permission::PermissionAsker::Asked> asked;
    std::vector<std::string> answers;
    int released = 0; ///< keys
    int clicks = 0;
};

TEST_F(PermissionQuestion, SaysWhoAsksForWhat) {
    program.run([&] {
        const std::vector<std::pair<std::vector<Capability>, std::string>> all{
            {{Capability::microphone}, "Allow a.example to use the microphone?"},
            {{Capability::camera}, "Allow a.example to use the camera?"},
            {{Capability::microphone, Capability::camera},
             "Allow a.example to use the microphone and the camera?"},
            {{Capability::notifications}, "Allow a.example to show notifications?"}};
        for (const auto& [capabilities, heading] : all) {
            ask(capabilities, "a.example");
            EXPECT_EQ(textsIn(dialog()).front(), heading);
            EXPECT_TRUE(isDescribed(
                dialog(), "You can change this at any time under “Permissions” in Kelo’s menu."));
            EXPECT_EQ(dialog().get_transient_for(), &program.window("Kelo"));
            asked.reset();
            RunningProgram::settle();
        }
    });
}

TEST_F(PermissionQuestion, AllowIsYes) {
    program.run([&] {
        ask();
        passDeadTime();
        click("Allow");
        untilAnswered("yes");
    });
}

TEST_F(PermissionQuestion, DontAllowIsNo) {
    program.run([&] {
        ask();
        passDeadTime();
        click("Don’t Allow");
        untilAnswered("no");
    });
}

TEST_F(PermissionQuestion, EscapeIsNoAnswer) {
    program.run([&] {
        ask();
        program.screen.press(GDK_KEY_Escape);
        untilAnswered("none");
    });
}

TEST_F(PermissionQuestion, ClosingIsNoAnswer) {
    program.run([&] {
        ask();
        dialog().close();
        untilAnswered("none");
    });
}

TEST_F(PermissionQuestion, ClickForWhatWasThereBeforeAnswersNothing) {
    program.run([&] {
        for (const char* const button : {"Allow", "Don’t Allow"}) {
            ask();
            click(button);
            press(GDK_KEY_a); // comes after the click
            expectOpen();
            asked.reset();
            RunningProgram::settle();
        }
    });
}

TEST_F(PermissionQuestion, SomebodyWhoTypesIntoThePageAnswersNothing) {
    program.run([&] {
        ask();
        passDeadTime();
        for (const unsigned key : {GDK_KEY_a, GDK_KEY_space, GDK_KEY_Return, GDK_KEY_KP_Enter})
            press(key);
        expectOpen();
    });
}

TEST_F(PermissionQuestion, KeyboardReachesBothButtons) {
    program.run([&] {
        ask();
        passDeadTime();
        press(GDK_KEY_Tab);
        EXPECT_TRUE(buttonNamed(dialog(), "Don’t Allow")->has_focus());
        press(GDK_KEY_Tab);
        EXPECT_TRUE(buttonNamed(dialog(), "Allow")->has_focus());
        program.screen.press(GDK_KEY_Return);
        untilAnswered("yes");
    });
}

TEST_F(PermissionQuestion, GoesWhenItIsTakenAway) {
    program.run([&] {
        ask();
        asked.reset();
        EXPECT_EQ(gtk::ModalWindow::topmost(), nullptr);
        RunningProgram::settle();
        EXPECT_TRUE(answers.empty());
    });
}

TEST_F(PermissionQuestion, LeavesTheKeyboardToAnotherProgram) {
    program.run([&] {
        screen::OtherProgram other;
        RunningProgram::until("the other program has the keyboard",
                              [&] { return !program.window("Kelo").is_active(); });
        asked = asker.ask(GTK_WIDGET(program.app.page->area.gobj()),
                          {"a.example", {Capability::camera}}, [](std::optional<bool>) {});
        program.untilDrawn(dialog());
        RunningProgram::settle();
        EXPECT_FALSE(dialog().is_active());
        asked.reset();
    });
}

// The page's window does not have the keyboard back by then.
TEST_F(PermissionQuestion, TakesTheKeyboardOnceAnotherOneIsAnswered) {
    program.run([&] {
        program.untilActive(program.window("Kelo"));
        std::unique_ptr<permission::PermissionAsker::Asked> second;
        GtkWidget* const page = GTK_WIDGET(program.app.page->area.gobj());
        asked = asker.ask(page, {"a.example", {Capability::camera}}, [&](std::optional<bool>) {
            second = asker.ask(page, {"a.example", {Capability::microphone}}, nullptr);
        });
        program.untilActive(dialog());
        dialog().close();
        RunningProgram::until("the next question", [&] { return second != nullptr; });
        program.untilActive(dialog());
    });
}

TEST_F(PermissionQuestion, HostCannotChangeTheSentence) {
    program.run([&] {
        ask({Capability::camera}, "a\u202Eb<b>\nc");
        EXPECT_EQ(textsIn(dialog()).front(), "Allow ab<b> c to use the camera?");
    });
}

} // namespace
} // namespace kelo::tests
