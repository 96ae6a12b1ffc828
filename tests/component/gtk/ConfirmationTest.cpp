#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/ConfirmationGuard.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"
#include "testing/screen/OtherProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/eventcontrollerkey.h>
#include <gtkmm/gestureclick.h>

#include <algorithm>
#include <map>

namespace kelo::tests {
namespace {

using Words = std::vector<std::string>;
/// What the user has said, in order.
using Told = std::shared_ptr<Words>;

constexpr auto deadTime = gtk::ConfirmationGuard::deadTime;
constexpr std::chrono::milliseconds moment{1};

Task<void> consentAndAsk(authenticator::PasskeySheet& sheet, bool echo, Told told) {
    authenticator::ConsentRequest request;
    request.ceremony = authenticator::Ceremony::signIn;
    request.relyingPartyIdentifier = "assistant.example.com";
    request.accountNames = {"ada@example.com", "grace@example.com"};
    const auto account = co_await sheet.confirm(std::move(request));
    told->push_back(account ? "agreed" : "cancelled");
    authenticator::VerificationPrompt prompt{"Password: ", echo};
    const auto answer = co_await sheet.ask(std::move(prompt));
    told->push_back(answer ? "answer " + std::string(answer->view()) : "cancelled");
}

Task<void> showAlert(gtk::GtkAlertPresenter& presenter, platform::Alert alert, Told told) {
    const auto outcome = co_await presenter.runModal(std::move(alert));
    told->push_back(std::to_string(outcome.returnCode) + " " +
                    std::string(outcome.fieldText.view()));
}

class Confirmation : public testing::Test {
protected:
    void openSheet() {
        sheet = factory.makeSheet(program.host.keyWindow());
        spawn(consentAndAsk(*sheet, echo, told));
        watch("Sign in with a passkey?");
    }
    void openAlert() {
        platform::Alert alert;
        alert.messageText = "Sure?";
        alert.buttons = {"Yes", "No"};
        alert.accessoryView = platform::SecureTextField{240, 24, "Password"};
        alert.accessoryIsInitialFirstResponder = true;
        spawn(showAlert(presenter, std::move(alert), told));
        watch("Sure?");
    }
    /// The sheet with its question, and the dead time over.
    void openQuestion() {
        openSheet();
        passDeadTime();
        press(GDK_KEY_Return);
        untilAsked();
        passDeadTime();
    }
    void end() {
        sheet.reset();
        dropSpawnedTasks();
    }
    Gtk::Window& window() { return *watched; }
    void passDeadTime() { time += deadTime; }

    /// Counts what reaches the window, before the window acts on it.
    void watch(const std::string& title) {
        watched = &program.window(title);
        auto keys = Gtk::EventControllerKey::create();
        keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
        keys->signal_key_pressed().connect(
            [this](guint key, guint, Gdk::ModifierType) {
                ++presses[key];
                return false;
            },
            false);
        watched->add_controller(keys);
        auto clicks = Gtk::GestureClick::create();
        clicks->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
        clicks->signal_pressed().connect([this](int, double, double) { ++presses[0]; });
        watched->add_controller(clicks);
        program.untilActive(*watched);
    }
    void untilMore(unsigned key, int before, int more) {
        RunningProgram::until("the key has come", [&] { return presses[key] >= before + more; });
        RunningProgram::settle();
    }
    void press(unsigned key, int times = 1) {
        const int before = presses[key];
        for (int time = 0; time < times; ++time)
            program.screen.press(key);
        untilMore(key, before, times);
    }
    void hold(unsigned key) {
        const int before = presses[key];
        program.screen.keyDown(key);
        untilMore(key, before, 6);
        program.screen.keyUp(key);
        RunningProgram::settle();
    }
    void click(const std::string& name) {
        const int before = presses[0];
        program.click(*buttonNamed(window(), name));
        untilMore(0, before, 1);
    }
    void untilAsked() {
        RunningProgram::until("the question is there", [&] {
            const auto texts = textsIn(window());
            return std::count(texts.begin(), texts.end(), "Password: ") > 0;
        });
    }
    void untilTold(std::size_t count) {
        RunningProgram::until("the user was heard", [&] { return told->size() == count; });
    }

    RunningProgram program;
    std::chrono::steady_clock::time_point time{std::chrono::hours(1)};
    gtk::GtkPasskeySheetFactory factory{[this] { return time; }};
    gtk::GtkAlertPresenter presenter{program.host, [this] { return time; }};
    std::unique_ptr<authenticator::PasskeySheet> sheet;
    bool echo = false;
    Told told = std::make_shared<Words>();
    std::map<unsigned, int> presses; ///< of each key; 0: of mouse buttons
    Gtk::Window* watched = nullptr;
};

TEST_F(Confirmation, HeldEnterAgreesOnceAndAnswersNothing) {
    program.run([&] {
        openSheet();
        passDeadTime();
        hold(GDK_KEY_Return);
        EXPECT_EQ(*told, Words{"agreed"});
        EXPECT_TRUE(window().get_mapped());
        end();
    });
}

TEST_F(Confirmation, HeldEnterAnswersOnceAndDoesNotCancel) {
    program.run([&] {
        openQuestion();
        program.screen.type("secret");
        hold(GDK_KEY_Return);
        EXPECT_EQ(*told, (Words{"agreed", "answer secret"}));
        EXPECT_TRUE(window().get_mapped());
        end();
    });
}

TEST_F(Confirmation, EnterHeldSinceAnotherWindowConfirmsNothing) {
    program.run([&] {
        program.screen.keyDown(GDK_KEY_Return);
        openSheet();
        passDeadTime();
        untilMore(GDK_KEY_Return, presses[GDK_KEY_Return], 6);
        EXPECT_TRUE(told->empty());
        program.screen.keyUp(GDK_KEY_Return);
        RunningProgram::settle();
        press(GDK_KEY_Return);
        untilTold(1);
        EXPECT_EQ(*told, Words{"agreed"});
        end();
    });
}

TEST_F(Confirmation, EscapeHeldSinceAnotherWindowCancelsNothing) {
    program.run([&] {
        program.screen.keyDown(GDK_KEY_Escape);
        openAlert();
        untilMore(GDK_KEY_Escape, presses[GDK_KEY_Escape], 6);
        EXPECT_TRUE(told->empty());
        program.screen.keyUp(GDK_KEY_Escape);
        RunningProgram::settle();
        // Within the dead time: it holds for what confirms.
        press(GDK_KEY_Escape);
        untilTold(1);
        EXPECT_EQ(*told, Words{"1001 "});
        end();
    });
}

TEST_F(Confirmation, HeldSpaceBarPressesAButtonOnce) {
    program.run([&] {
        openSheet();
        passDeadTime();
        buttonNamed(window(), "Continue")->grab_focus();
        hold(GDK_KEY_space);
        untilTold(1);
        EXPECT_EQ(*told, Words{"agreed"});
        end();
    });
}

TEST_F(Confirmation, HeldSpaceBarAndLettersRepeatInTheEntry) {
    program.run([&] {
        echo = true;
        openQuestion();
        hold(GDK_KEY_space);
        hold(GDK_KEY_a);
        press(GDK_KEY_Return);
        untilTold(2);
        EXPECT_TRUE(told->back().starts_with("answer      ")) << told->back();
        EXPECT_TRUE(told->back().ends_with("aaaaaa")) << told->back();
        end();
    });
}

TEST_F(Confirmation, EnterPressedAgainWhileWaitingDoesNotCancel) {
    program.run([&] {
        openQuestion();
        program.screen.type("secret");
        press(GDK_KEY_Return, 3);
        untilTold(2);
        passDeadTime();
        press(GDK_KEY_Return, 3);
        press(GDK_KEY_space);
        EXPECT_EQ(*told, (Words{"agreed", "answer secret"}));
        EXPECT_TRUE(window().get_mapped());
        end();
    });
}

TEST_F(Confirmation, EscapeCancelsWhileWaiting) {
    program.run([&] {
        openQuestion();
        program.screen.type("secret");
        press(GDK_KEY_Return);
        untilTold(2);
        bool cancelled = false;
        sheet->onCancel([&] { cancelled = true; });
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("it is cancelled", [&] { return cancelled; });
        end();
    });
}

TEST_F(Confirmation, WhileWaitingTheFocusIsOnWhatIsWaitedFor) {
    program.run([&] {
        openQuestion();
        program.screen.type("secret");
        press(GDK_KEY_Return);
        untilTold(2);
        const auto focusIsNamed = [&](const std::string& name) {
            auto* focus = window().get_focus();
            return focus && focus->get_mapped() && isNamed(*focus, name);
        };
        EXPECT_TRUE(focusIsNamed("One moment…"));
        sheet->showInformation("Swipe your finger");
        program.untilDrawn(window());
        EXPECT_TRUE(focusIsNamed("Swipe your finger"));
        sheet->showError("Not recognized. Try again.");
        program.untilDrawn(window());
        EXPECT_TRUE(focusIsNamed("Not recognized. Try again."));
        // From here the keyboard reaches Cancel.
        press(GDK_KEY_Tab);
        EXPECT_EQ(window().get_focus(), buttonNamed(window(), "Cancel"));
        sheet->showInformation("Swipe your finger");
        program.untilDrawn(window());
        EXPECT_EQ(window().get_focus(), buttonNamed(window(), "Cancel"));
        press(GDK_KEY_Return);
        RunningProgram::until("it is cancelled", [&] { return !window().get_mapped(); });
        end();
    });
}

TEST_F(Confirmation, EnterGivesNoEmptyAnswer) {
    program.run([&] {
        openQuestion();
        press(GDK_KEY_Return);
        press(GDK_KEY_KP_Enter);
        buttonNamed(window(), "Continue")->grab_focus();
        press(GDK_KEY_Return);
        EXPECT_EQ(*told, Words{"agreed"});
        end();
    });
}

TEST_F(Confirmation, EnterOnCancelCancelsAnEmptyQuestion) {
    program.run([&] {
        openQuestion();
        buttonNamed(window(), "Cancel")->grab_focus();
        press(GDK_KEY_Return);
        untilTold(2);
        EXPECT_EQ(told->back(), "cancelled");
        end();
    });
}

TEST_F(Confirmation, ContinueButtonGivesAnEmptyAnswer) {
    program.run([&] {
        openQuestion();
        click("Continue");
        untilTold(2);
        EXPECT_EQ(told->back(), "answer ");
        end();
    });
}

TEST_F(Confirmation, SheetThatHasJustAppearedIsNotAgreedToByAccident) {
    program.run([&] {
        openSheet();
        press(GDK_KEY_Return);
        click("Continue");
        buttonNamed(window(), "Continue")->grab_focus();
        press(GDK_KEY_space);
        time += deadTime - moment;
        press(GDK_KEY_Return);
        click("Continue");
        EXPECT_TRUE(told->empty());
        time += moment;
        click("Continue");
        untilTold(1);
        EXPECT_EQ(*told, Words{"agreed"});
        end();
    });
}

TEST_F(Confirmation, QuestionThatHasJustAppearedIsNotAnsweredByAccident) {
    program.run([&] {
        openSheet();
        passDeadTime();
        press(GDK_KEY_Return);
        untilAsked();
        program.screen.type("sec");
        press(GDK_KEY_Return);
        click("Continue");
        EXPECT_EQ(*told, Words{"agreed"});
        passDeadTime();
        program.screen.type("ret");
        press(GDK_KEY_Return);
        untilTold(2);
        EXPECT_EQ(told->back(), "answer secret");
        end();
    });
}

TEST_F(Confirmation, AlertThatHasJustAppearedIsNotConfirmedByAccident) {
    program.run([&] {
        openAlert();
        program.screen.type("secret");
        press(GDK_KEY_Return);
        click("Yes");
        EXPECT_TRUE(told->empty());
        passDeadTime();
        press(GDK_KEY_Return);
        untilTold(1);
        EXPECT_EQ(*told, Words{"1000 secret"});
        end();
    });
}

TEST_F(Confirmation, OtherButtonsAreClickedAtOnce) {
    program.run([&] {
        openAlert();
        click("No");
        untilTold(1);
        EXPECT_EQ(*told, Words{"1001 "});
        end();
    });
}

TEST_F(Confirmation, KeysAreNotHeardJustAfterTheWindowGetsTheKeyboard) {
    program.run([&] {
        openSheet();
        passDeadTime();
        {
            const screen::OtherProgram other({40, 40, 300, 200});
            RunningProgram::until("the other program has the keyboard",
                                  [&] { return other.hasKeyboard() && !window().is_active(); });
        }
        window().present();
        program.untilActive(window());
        press(GDK_KEY_Return);
        EXPECT_TRUE(told->empty());
        click("Continue");
        untilTold(1);
        EXPECT_EQ(*told, Words{"agreed"});
        end();
    });
}

} // namespace
} // namespace kelo::tests
