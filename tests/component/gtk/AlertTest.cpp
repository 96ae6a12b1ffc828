#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/passwordentry.h>

#include <algorithm>

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
    gtk::GtkAlertPresenter presenter{program.host};
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
        EXPECT_EQ(program.boxOf(*fields.front()).width, 240);
        // The one that goes ahead at the end of the line, as this desktop has it.
        EXPECT_LT(program.boxOf(*buttonNamed(window, "Annuleer")).x,
                  program.boxOf(*buttonNamed(window, "Registreer")).x);
        EXPECT_EQ(window.get_default_widget(), buttonNamed(window, "Registreer"));
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
