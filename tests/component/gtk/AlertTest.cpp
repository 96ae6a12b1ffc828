#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/AlertDialog.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "testing/screen/OtherProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/label.h>
#include <gtkmm/passwordentry.h>
#include <gtkmm/stylecontext.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace kelo::tests {
namespace {

using Outcome = std::shared_ptr<std::optional<platform::AlertOutcome>>;

Task<void> present(platform::AlertPresenter& presenter, platform::Alert alert, Outcome outcome) {
    *outcome = co_await presenter.runModal(std::move(alert));
}

platform::Alert registrationPrompt() {
    platform::Alert alert;
    alert.messageText = "Bevestig registratie";
    alert.informativeText = "Vul je wachtwoord óf een MFA-code in om deze passkey te registreren.";
    alert.buttons = {"Registreer", "Annuleer"};
    alert.accessoryView = platform::SecureTextField{240, 24, "Wachtwoord of MFA-code"};
    alert.accessoryIsInitialFirstResponder = true;
    return alert;
}

platform::Alert result(std::string title) {
    platform::Alert alert;
    alert.messageText = std::move(title);
    alert.informativeText = "Passkey registered on this Mac.";
    return alert;
}

class AlertDialog : public testing::Test {
protected:
    Outcome start(platform::Alert alert) {
        auto outcome = std::make_shared<std::optional<platform::AlertOutcome>>();
        spawn(present(presenter, std::move(alert), outcome));
        return outcome;
    }
    Gtk::Window& dialog(const std::string& title) {
        auto& window = program.window(title);
        program.untilActive(window);
        return window;
    }
    void untilEnded(const Outcome& outcome) {
        RunningProgram::until("the alert has ended", [&] { return outcome->has_value(); });
    }

    RunningProgram program;
    gtk::GtkAlertPresenter presenter{program.host, hurryingClock()};
};

TEST_F(AlertDialog, SaysWhatTheAlertSays) {
    program.run([&] {
        const auto outcome = start(registrationPrompt());
        auto& window = dialog("Bevestig registratie");
        const auto texts = textsIn(window);
        EXPECT_EQ(std::count(texts.begin(), texts.end(), "Bevestig registratie"), 1);
        EXPECT_EQ(
            std::count(texts.begin(), texts.end(),
                       "Vul je wachtwoord óf een MFA-code in om deze passkey te registreren."),
            1);
        const auto fields = visibleIn<Gtk::PasswordEntry>(window);
        ASSERT_EQ(fields.size(), 1U);
        EXPECT_EQ(fields.front()->property_placeholder_text().get_value(),
                  "Wachtwoord of MFA-code");
        EXPECT_TRUE(isNamed(*fields.front(), "Wachtwoord of MFA-code"));
        // The affirmative button is at the end of the row, as usual on this desktop.
        EXPECT_LT(program.boxOf(*buttonNamed(window, "Annuleer")).x,
                  program.boxOf(*buttonNamed(window, "Registreer")).x);
        EXPECT_EQ(window.get_default_widget(), buttonNamed(window, "Registreer"));
    });
}

TEST_F(AlertDialog, FieldHasTheSizeThatTheAlertAsksForAndItsTextFits) {
    program.run([&] {
        for (const auto& [width, height] : {std::pair{240, 24}, {300, 40}}) {
            auto alert = registrationPrompt();
            alert.accessoryView->width = width;
            alert.accessoryView->height = height;
            start(alert);
            auto& window = dialog("Bevestig registratie");
            auto* field = visibleIn<Gtk::PasswordEntry>(window).at(0);
            const int scale = field->get_scale_factor();
            EXPECT_EQ(program.boxOf(*field).width, width * scale);
            EXPECT_EQ(program.boxOf(*field).height, height * scale);
            for (auto* part : visibleIn<Gtk::Widget>(*field)) {
                int minimum = 0;
                int natural = 0;
                int unused = 0;
                part->measure(Gtk::Orientation::VERTICAL, -1, minimum, natural, unused, unused);
                EXPECT_LE(minimum, height);
            }
            const auto content = program.boxOf(*window.get_child());
            const auto box = program.boxOf(*field);
            EXPECT_LE(std::abs(2 * (box.x - content.x) + box.width - content.width), 1)
                << "in the middle";
            dropSpawnedTasks();
            RunningProgram::settle();
        }
    });
}

TEST_F(AlertDialog, FieldThatIsNotTheFirstResponderLeavesTheKeyboardToTheFirstButton) {
    program.run([&] {
        auto alert = registrationPrompt();
        alert.accessoryIsInitialFirstResponder = false;
        start(alert);
        auto& window = dialog("Bevestig registratie");
        EXPECT_TRUE(buttonNamed(window, "Registreer")->has_focus());
    });
}

TEST_F(AlertDialog, FirstButtonAloneIsProminent) {
    program.run([&] {
        start(registrationPrompt());
        auto& window = dialog("Bevestig registratie");
        const auto ground = [&](const char* name) {
            const auto box = program.boxOf(*buttonNamed(window, name));
            return program.screen.colorAt(box.x + 8, box.y + box.height / 2);
        };
        Gdk::RGBA accent;
        ASSERT_TRUE(window.get_style_context()->lookup_color("theme_selected_bg_color", accent));
        const auto difference = [&](Color color) {
            return std::abs(color.red - std::lround(255 * accent.get_red())) +
                   std::abs(color.green - std::lround(255 * accent.get_green())) +
                   std::abs(color.blue - std::lround(255 * accent.get_blue()));
        };
        EXPECT_LT(difference(ground("Registreer")), 60);
        EXPECT_GT(difference(ground("Annuleer")), 120);
        EXPECT_LE(std::abs(program.boxOf(*buttonNamed(window, "Registreer")).width -
                           program.boxOf(*buttonNamed(window, "Annuleer")).width),
                  1);
    });
}

TEST_F(AlertDialog, ButtonsShareTheWholeLine) {
    program.run([&] {
        start(registrationPrompt());
        auto& window = dialog("Bevestig registratie");
        auto* one = buttonNamed(window, "Registreer");
        const auto line = program.boxOf(*one->get_parent());
        EXPECT_EQ(program.boxOf(*one).width +
                      program.boxOf(*buttonNamed(window, "Annuleer")).width + 12,
                  line.width);
    });
}

TEST_F(AlertDialog, AnsweredItGoesOffTheScreenAndIsNotAnsweredAgain) {
    program.run([&] {
        int answers = 0;
        gtk::AlertDialog held(result("Passkey"), nullptr, hurryingClock(),
                              [&](const platform::AlertOutcome&) { ++answers; });
        held.present();
        dialog("Passkey");
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("it is answered", [&] { return answers == 1; });
        EXPECT_FALSE(held.get_visible());
        held.close();
        RunningProgram::settle();
        EXPECT_EQ(answers, 1);
    });
}

TEST_F(AlertDialog, KeepsTheKeyboardWhenAnotherWindowIsAskedFor) {
    program.run([&] {
        start(result("Passkey"));
        auto& window = dialog("Passkey");
        const screen::OtherProgram other({40, 40, 300, 200});
        RunningProgram::until("the other program has the keyboard",
                              [&] { return other.hasKeyboard() && !window.is_active(); });
        program.host.openWindow("main");
        program.untilActive(window);
    });
}

TEST_F(AlertDialog, ScreenReaderAnnouncesWhatItSays) {
    program.run([&] {
        start(registrationPrompt());
        auto* native = GTK_ACCESSIBLE(dialog("Bevestig registratie").gobj());
        EXPECT_TRUE(gtk_test_accessible_has_role(native, GTK_ACCESSIBLE_ROLE_ALERT_DIALOG));
        char* different = gtk_test_accessible_check_property(
            native, GTK_ACCESSIBLE_PROPERTY_DESCRIPTION,
            "Vul je wachtwoord óf een MFA-code in om deze passkey te registreren.");
        EXPECT_EQ(different, nullptr) << different;
        g_free(different);
    });
}

TEST_F(AlertDialog, WithoutATextItHasNoLineForIt) {
    program.run([&] {
        platform::Alert alert;
        alert.informativeText = "Only this.";
        const auto first = start(alert);
        RunningProgram::until("a dialog", [&] { return program.windowsOnScreen().size() == 2; });
        auto* window = gtk::ModalWindow::topmost();
        ASSERT_NE(window, nullptr);
        program.untilActive(*window);
        EXPECT_EQ(window->get_title(), "Kelo");
        EXPECT_EQ(textsIn(*window), (std::vector<std::string>{"Only this.", "OK"}));
        program.screen.press(GDK_KEY_Return);
        untilEnded(first);

        alert = {};
        alert.messageText = "Only that";
        start(alert);
        EXPECT_EQ(textsIn(dialog("Only that")), (std::vector<std::string>{"Only that", "OK"}));
    });
}

TEST_F(AlertDialog, LongTextsWrapInTheMiddle) {
    program.run([&] {
        auto alert = result("Passkey");
        for (int word = 0; word < 40; ++word)
            alert.informativeText += " certificate";
        alert.informativeText += std::string(100, 'x');
        start(alert);
        auto& window = dialog("Passkey");
        EXPECT_LT(window.get_width(), 500);
        for (auto* label : visibleIn<Gtk::Label>(*window.get_child()))
            if (label->get_text().raw() == alert.informativeText) {
                EXPECT_GT(label->get_layout()->get_line_count(), 10);
                EXPECT_EQ(label->get_justify(), Gtk::Justification::CENTER);
                EXPECT_FALSE(label->get_layout()->is_ellipsized());
            }
    });
}

TEST_F(AlertDialog, MessageStandsOutFromTheText) {
    program.run([&] {
        start(registrationPrompt());
        auto& window = dialog("Bevestig registratie");
        const auto labels = visibleIn<Gtk::Label>(*window.get_child());
        ASSERT_GE(labels.size(), 2U);
        const auto font = [](Gtk::Label& label) {
            return label.get_layout()->get_context()->get_font_description();
        };
        EXPECT_GT(font(*labels[0]).get_size(), font(*labels[1]).get_size());
        EXPECT_GT(font(*labels[0]).get_weight(), font(*labels[1]).get_weight());
    });
}

TEST_F(AlertDialog, TypingGoesToTheFieldAndEnterPressesTheFirstButton) {
    program.run([&] {
        const auto outcome = start(registrationPrompt());
        dialog("Bevestig registratie");
        program.screen.type("secret 7");
        program.screen.press(GDK_KEY_Return);
        untilEnded(outcome);
        EXPECT_EQ((*outcome)->returnCode, 1000);
        EXPECT_EQ((*outcome)->fieldText.view(), "secret 7");
        RunningProgram::until("the dialog is gone",
                              [&] { return Gtk::Window::list_toplevels().size() == 1; });
    });
}

TEST_F(AlertDialog, EscapePressesTheLastButton) {
    program.run([&] {
        const auto outcome = start(registrationPrompt());
        dialog("Bevestig registratie");
        program.screen.type("secret");
        program.screen.press(GDK_KEY_Escape);
        untilEnded(outcome);
        EXPECT_EQ((*outcome)->returnCode, 1001);
    });
}

TEST_F(AlertDialog, ClosingItPressesTheLastButton) {
    program.run([&] {
        const auto outcome = start(registrationPrompt());
        dialog("Bevestig registratie").close();
        untilEnded(outcome);
        EXPECT_EQ((*outcome)->returnCode, 1001);
    });
}

TEST_F(AlertDialog, EachButtonHasItsReturnCode) {
    program.run([&] {
        for (int index = 0; index < 3; ++index) {
            auto alert = result("Three");
            alert.buttons = {"One", "Two", "Three of them"};
            const auto outcome = start(alert);
            auto& window = dialog("Three");
            program.click(*buttonNamed(window, alert.buttons[static_cast<std::size_t>(index)]));
            untilEnded(outcome);
            EXPECT_EQ((*outcome)->returnCode, 1000 + index);
            EXPECT_TRUE((*outcome)->fieldText.empty());
        }
    });
}

TEST_F(AlertDialog, WithoutButtonsItHasOneToAcknowledge) {
    program.run([&] {
        for (const unsigned key : {GDK_KEY_Return, GDK_KEY_Escape}) {
            const auto outcome = start(result("Passkey"));
            auto& window = dialog("Passkey");
            EXPECT_EQ(visibleIn<Gtk::Button>(window).size(), 1U);
            EXPECT_NE(buttonNamed(window, "OK"), nullptr);
            program.screen.press(key);
            untilEnded(outcome);
            EXPECT_EQ((*outcome)->returnCode, 1000);
        }
    });
}

TEST_F(AlertDialog, OtherWindowsTakeNoInputMeanwhile) {
    program.run([&] {
        const auto outcome = start(result("Passkey"));
        auto& window = dialog("Passkey");
        const auto page = program.boxOf(program.app.page->area);
        program.screen.click(page.x + 10, page.y + 10);
        // Clicks come in their order: had the first reached the page, it would be there by now.
        program.click(*buttonNamed(window, "OK"));
        untilEnded(outcome);
        EXPECT_EQ(program.app.page->clicks, 0);
    });
}

TEST_F(AlertDialog, AnAlertOverAnotherIsAnsweredFirst) {
    program.run([&] {
        const auto first = start(result("First"));
        dialog("First");
        const auto second = start(result("Second"));
        dialog("Second");
        program.screen.press(GDK_KEY_Return);
        untilEnded(second);
        EXPECT_FALSE(first->has_value());
        dialog("First");
        program.screen.press(GDK_KEY_Return);
        untilEnded(first);
    });
}

TEST_F(AlertDialog, StandsAloneWhenNoWindowIsOpen) {
    program.run([&] {
        program.window("Kelo").close();
        RunningProgram::until("no window is open",
                              [&] { return Gtk::Window::list_toplevels().empty(); });
        const auto outcome = start(result("Passkey"));
        dialog("Passkey");
        program.screen.press(GDK_KEY_Return);
        untilEnded(outcome);
        EXPECT_EQ((*outcome)->returnCode, 1000);
    });
}

TEST_F(AlertDialog, GoesWhenItsTaskIsDropped) {
    program.run([&] {
        start(registrationPrompt());
        dialog("Bevestig registratie");
        program.screen.type("secret");
        dropSpawnedTasks();
        RunningProgram::settle();
        EXPECT_EQ(Gtk::Window::list_toplevels().size(), 1U);
    });
}

TEST_F(AlertDialog, ProgramMayEndWhileItIsUp) {
    program.runToItsOwnEnd([&] {
        start(registrationPrompt());
        dialog("Bevestig registratie");
        program.host.terminate();
    });
    EXPECT_EQ(program.status, 0);
    dropSpawnedTasks();
    EXPECT_TRUE(Gtk::Window::list_toplevels().empty());
}

TEST_F(AlertDialog, AfterwardsTheMainWindowHasTheKeyboardAgain) {
    program.run([&] {
        const auto outcome = start(result("Passkey"));
        dialog("Passkey");
        program.screen.press(GDK_KEY_Return);
        untilEnded(outcome);
        program.untilActive(program.window("Kelo"));
        EXPECT_NE(program.host.keyWindow(), nullptr);
        EXPECT_TRUE(program.app.page->area.has_focus());
    });
}

} // namespace
} // namespace kelo::tests
