#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>
#include <gtkmm/passwordentry.h>
#include <gtkmm/spinner.h>

#include <algorithm>

namespace kelo::tests {
namespace {

constexpr const char* signInTitle = "Sign in with a passkey?";
constexpr const char* registrationTitle = "Create a passkey?";

/// The result of a task: empty while it runs; the result itself may be "cancelled".
template <typename T>
using Result = std::shared_ptr<std::optional<std::optional<T>>>;

Task<void> confirm(authenticator::PasskeySheet& sheet, authenticator::ConsentRequest request,
                   Result<std::size_t> result) {
    *result = co_await sheet.confirm(std::move(request));
}

Task<void> ask(authenticator::PasskeySheet& sheet, authenticator::VerificationPrompt prompt,
               Result<SecretText> result) {
    *result = co_await sheet.ask(std::move(prompt));
}

class PasskeySheet : public testing::Test {
protected:
    void run(const std::function<void()>& body) {
        program.run([&] {
            sheet = factory.makeSheet(program.host.keyWindow());
            body();
            sheet.reset();
        });
    }
    Result<std::size_t> startConsent(std::vector<std::string> accounts = {"demo@example.com"}) {
        authenticator::ConsentRequest request;
        request.ceremony = ceremony;
        request.relyingPartyIdentifier = "assistant.example.com";
        request.accountNames = std::move(accounts);
        auto result = std::make_shared<std::optional<std::optional<std::size_t>>>();
        spawn(confirm(*sheet, std::move(request), result));
        return result;
    }
    Result<SecretText> startQuestion(std::string text, bool echo = false) {
        auto result = std::make_shared<std::optional<std::optional<SecretText>>>();
        authenticator::VerificationPrompt prompt{std::move(text), echo};
        spawn(ask(*sheet, std::move(prompt), result));
        return result;
    }
    Gtk::Window& window() {
        auto& found = program.window(
            ceremony == authenticator::Ceremony::signIn ? signInTitle : registrationTitle);
        program.untilActive(found);
        return found;
    }
    bool says(const std::string& text) {
        const auto texts = textsIn(window());
        return std::count(texts.begin(), texts.end(), text) > 0;
    }
    template <typename T>
    static void untilEnded(const Result<T>& result) {
        RunningProgram::until("the task has ended", [&] { return result->has_value(); });
    }
    void agree() {
        const auto consent = startConsent();
        window();
        program.screen.press(GDK_KEY_Return);
        untilEnded(consent);
        ASSERT_EQ(**consent, 0U);
    }
    template <typename Kind>
    void untilFocusIsIn() {
        RunningProgram::until("the line is there", [&] {
            const auto lines = visibleIn<Kind>(window());
            return !lines.empty() && window().get_focus() &&
                   window().get_focus()->is_ancestor(*lines.front());
        });
    }
    bool isGone() { return program.windowsOnScreen().size() == 1; }

    RunningProgram program;
    gtk::GtkPasskeySheetFactory factory{hurryingClock()};
    authenticator::Ceremony ceremony = authenticator::Ceremony::signIn;
    std::unique_ptr<authenticator::PasskeySheet> sheet;
};

TEST_F(PasskeySheet, SaysWhoAsksForWhichAccount) {
    run([&] {
        startConsent();
        EXPECT_TRUE(says("assistant.example.com asks you to sign in with a passkey that is kept on "
                         "this computer."));
        EXPECT_TRUE(says("demo@example.com"));
        EXPECT_TRUE(visibleIn<Gtk::CheckButton>(window()).empty());
        EXPECT_EQ(window().get_default_widget(), buttonNamed(window(), "Continue"));
        EXPECT_TRUE(window().get_modal());
        EXPECT_EQ(window().get_transient_for(), &program.window("Kelo"));
    });
}

TEST_F(PasskeySheet, RegistrationHasItsOwnWords) {
    ceremony = authenticator::Ceremony::registration;
    run([&] {
        startConsent();
        EXPECT_TRUE(says("assistant.example.com asks to keep a passkey for you on this computer."));
    });
}

TEST_F(PasskeySheet, NameOfAnyLengthIsShownOnOneShortLine) {
    run([&] {
        const std::string name = "ada\n\u202E" + std::string(5'000'000, 'a');
        startConsent({name, "grace@example.com"});
        const std::string line = "ada " + std::string(59, 'a') + "…";
        EXPECT_TRUE(says(line));
        EXPECT_TRUE(isNamed(*visibleIn<Gtk::CheckButton>(window()).front(), line));
        EXPECT_LT(program.boxOf(window()).height, 600);
    });
}

TEST_F(PasskeySheet, OnlyNameOfAnyLengthIsShownOnOneShortLine) {
    run([&] {
        startConsent({std::string(5'000'000, 'a')});
        EXPECT_TRUE(says(std::string(63, 'a') + "…"));
    });
}

TEST_F(PasskeySheet, MarkupInNamesIsShownAsItStands) {
    run([&] {
        startConsent({"<b>A & B</b>"});
        EXPECT_TRUE(says("<b>A & B</b>"));
    });
}

TEST_F(PasskeySheet, OneOfSeveralAccountsIsChosenWithTheKeyboard) {
    run([&] {
        const auto consent = startConsent({"one@example.com", "two@example.com", "three@x.org"});
        EXPECT_EQ(visibleIn<Gtk::CheckButton>(window()).size(), 3U);
        EXPECT_TRUE(isNamed(*visibleIn<Gtk::CheckButton>(window())[1], "two@example.com"));
        program.screen.press(GDK_KEY_Down);
        program.screen.press(GDK_KEY_Return);
        untilEnded(consent);
        EXPECT_EQ(**consent, 1U);
    });
}

TEST_F(PasskeySheet, FirstAccountIsTheOneChosenToBeginWith) {
    run([&] {
        const auto consent = startConsent({"one@example.com", "two@example.com"});
        window();
        program.screen.press(GDK_KEY_Return);
        untilEnded(consent);
        EXPECT_EQ(**consent, 0U);
    });
}

TEST_F(PasskeySheet, CancelsWithTheButtonEscapeAndTheWindowManager) {
    program.run([&] {
        for (int way = 0; way < 3; ++way) {
            sheet = factory.makeSheet(program.host.windows().front());
            int cancelled = 0;
            sheet->onCancel([&cancelled] { ++cancelled; });
            const auto consent = startConsent();
            if (way == 0)
                program.click(*buttonNamed(window(), "Cancel"));
            else if (way == 1)
                window(), program.screen.press(GDK_KEY_Escape);
            else
                window().close();
            untilEnded(consent);
            EXPECT_EQ(**consent, std::nullopt) << "way " << way;
            RunningProgram::settle();
            EXPECT_EQ(cancelled, 1) << "way " << way;
            EXPECT_TRUE(isGone()) << "way " << way;
            sheet.reset();
        }
    });
}

TEST_F(PasskeySheet, QuestionWithAWordLongerThanTheSheetGetsNoHyphenOfOurs) {
    run([&] {
        agree();
        const std::string word(64, 'W');
        startQuestion(word);
        untilFocusIsIn<Gtk::PasswordEntry>();
        auto* label = labelSaying(window(), word);
        ASSERT_NE(label, nullptr);
        EXPECT_TRUE(isBrokenWithoutHyphen(*label));
    });
}

TEST_F(PasskeySheet, PasswordIsAskedForMaskedAndHandedOver) {
    run([&] {
        agree();
        const auto answer = startQuestion("Password: ");
        untilFocusIsIn<Gtk::PasswordEntry>();
        EXPECT_TRUE(says("Password: "));
        EXPECT_TRUE(isNamed(*visibleIn<Gtk::PasswordEntry>(window()).front(), "Password: "));
        program.screen.type("secret");
        program.screen.press(GDK_KEY_Return);
        untilEnded(answer);
        ASSERT_TRUE(**answer);
        EXPECT_EQ((**answer)->view(), "secret");
        EXPECT_TRUE(visibleIn<Gtk::PasswordEntry>(window()).empty());
    });
}

TEST_F(PasskeySheet, QuestionWithEchoShowsWhatIsTyped) {
    run([&] {
        agree();
        const auto answer = startQuestion("Code: ", true);
        untilFocusIsIn<Gtk::Entry>();
        program.screen.type("12");
        program.screen.press(GDK_KEY_Return);
        untilEnded(answer);
        EXPECT_EQ((**answer)->view(), "12");
    });
}

TEST_F(PasskeySheet, WrongPasswordIsSaidInRedAboveTheNextQuestion) {
    run([&] {
        agree();
        const auto first = startQuestion("Password: ");
        untilFocusIsIn<Gtk::PasswordEntry>();
        program.screen.type("wrong");
        program.screen.press(GDK_KEY_Return);
        untilEnded(first);
        sheet->showError("Wrong password. Try again.");
        const auto second = startQuestion("Password: ");
        untilFocusIsIn<Gtk::PasswordEntry>();
        EXPECT_TRUE(says("Wrong password. Try again."));
        auto* error = withClass(window(), "kelo-red");
        ASSERT_NE(error, nullptr);
        EXPECT_TRUE(
            gtk_test_accessible_has_role(GTK_ACCESSIBLE(error->gobj()), GTK_ACCESSIBLE_ROLE_ALERT));
        program.screen.type("right");
        program.screen.press(GDK_KEY_Return);
        untilEnded(second);
        EXPECT_EQ((**second)->view(), "right") << "the wrong answer must not have stayed";
    });
}

TEST_F(PasskeySheet, InformationIsShownWithASignOfWaiting) {
    run([&] {
        agree();
        sheet->showInformation("Swipe your finger");
        EXPECT_TRUE(says("Swipe your finger"));
        ASSERT_EQ(visibleIn<Gtk::Spinner>(window()).size(), 1U);
        EXPECT_TRUE(visibleIn<Gtk::Spinner>(window()).front()->get_spinning());
        EXPECT_FALSE(buttonNamed(window(), "Continue")->is_sensitive());
        EXPECT_EQ(withClass(window(), "kelo-red"), nullptr);
    });
}

TEST_F(PasskeySheet, CancelWhileNothingIsAskedRunsTheAction) {
    run([&] {
        agree();
        int former = 0;
        int current = 0;
        sheet->onCancel([&former] { ++former; });
        sheet->onCancel([&current] { ++current; });
        sheet->showInformation("Swipe your finger");
        window();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the action ran", [&] { return current == 1; });
        EXPECT_EQ(former, 0);
        RunningProgram::until("the sheet is gone", [&] { return isGone(); });
        // Messages of the verification after the cancellation are ignored.
        sheet->showError("Too late.");
        const auto answer = startQuestion("Password: ");
        untilEnded(answer);
        EXPECT_FALSE(**answer);
        EXPECT_TRUE(isGone());
    });
}

TEST_F(PasskeySheet, CancelAtAQuestionAnswersNothing) {
    run([&] {
        agree();
        const auto answer = startQuestion("Password: ");
        untilFocusIsIn<Gtk::PasswordEntry>();
        program.screen.type("half");
        program.screen.press(GDK_KEY_Escape);
        untilEnded(answer);
        EXPECT_FALSE(**answer);
    });
}

TEST_F(PasskeySheet, MayBeDestroyedByItsOwnCancellation) {
    run([&] {
        startConsent();
        bool ran = false;
        sheet->onCancel([&] {
            ran = true;
            dropSpawnedTasks();
            sheet.reset();
        });
        window();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the action ran", [&] { return ran; });
        RunningProgram::settle();
        EXPECT_TRUE(isGone());
    });
}

TEST_F(PasskeySheet, MayBeDestroyedWhileItAsks) {
    run([&] {
        agree();
        const auto answer = startQuestion("Password: ");
        untilFocusIsIn<Gtk::PasswordEntry>();
        sheet.reset();
        RunningProgram::settle();
        EXPECT_TRUE(isGone());
        EXPECT_FALSE(answer->has_value());
        dropSpawnedTasks();
    });
}

TEST_F(PasskeySheet, DestroyedRightAfterTheAnswerTheAnswerStillArrives) {
    run([&] {
        const auto consent = startConsent();
        auto* button = buttonNamed(window(), "Continue");
        g_signal_emit_by_name(button->gobj(), "clicked");
        sheet.reset();
        untilEnded(consent);
        EXPECT_EQ(**consent, 0U);
    });
}

TEST_F(PasskeySheet, TaskMayBeDroppedAndAnotherStarted) {
    run([&] {
        agree();
        startQuestion("Password: ");
        untilFocusIsIn<Gtk::PasswordEntry>();
        program.screen.type("old");
        RunningProgram::until("it was typed", [&] {
            return visibleIn<Gtk::PasswordEntry>(window()).front()->get_text().length() == 3;
        });
        dropSpawnedTasks();
        const auto answer = startQuestion("PIN: ");
        RunningProgram::until("the other question", [&] { return says("PIN: "); });
        untilFocusIsIn<Gtk::PasswordEntry>();
        program.screen.type("new");
        program.screen.press(GDK_KEY_Return);
        untilEnded(answer);
        EXPECT_EQ((**answer)->view(), "new");
    });
}

TEST_F(PasskeySheet, StandsAloneOverAPlainWindow) {
    program.run([&] {
        program.window("Kelo").close();
        RunningProgram::settle();
        sheet = factory.makeSheet(program.host.makePlainWindow());
        const auto consent = startConsent();
        window();
        program.screen.press(GDK_KEY_Return);
        untilEnded(consent);
        EXPECT_EQ(**consent, 0U);
        sheet.reset();
    });
}

} // namespace
} // namespace kelo::tests
