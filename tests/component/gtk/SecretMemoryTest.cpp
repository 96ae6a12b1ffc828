#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "testing/rig/ProcessMemory.h"

#include <gdk/gdkkeysyms.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <unistd.h>

namespace kelo::tests {
namespace {

using testing::IsEmpty;
using testing::Not;

/// How long the answer was; 0 until it is given. Only that is kept.
using Length = std::shared_ptr<std::size_t>;

Task<void> show(gtk::GtkAlertPresenter& presenter, platform::Alert alert, Length length) {
    const auto outcome = co_await presenter.runModal(std::move(alert));
    *length = outcome.fieldText.view().size();
}

platform::Alert prompt() {
    platform::Alert alert;
    alert.messageText = "Sure?";
    alert.buttons = {"Yes", "No"};
    alert.accessoryView = platform::SecureTextField{240, 24, "Account password"};
    alert.accessoryIsInitialFirstResponder = true;
    return alert;
}

Task<void> ask(authenticator::PasskeySheet& sheet, bool echo, Length length) {
    authenticator::VerificationPrompt question{"Answer", echo};
    const auto answer = co_await sheet.ask(std::move(question));
    *length = answer ? answer->view().size() : 0;
}

enum class Place { prompt, maskedQuestion, visibleQuestion };

class SecretMemory : public testing::TestWithParam<Place> {
protected:
    void open() {
        if (GetParam() == Place::prompt) {
            spawn(show(presenter, prompt(), length));
        } else {
            sheet = factory.makeSheet(program.host.keyWindow());
            spawn(ask(*sheet, GetParam() == Place::visibleQuestion, length));
        }
        RunningProgram::until("a dialog is there",
                              [] { return gtk::ModalWindow::topmost() != nullptr; });
        program.untilActive(*gtk::ModalWindow::topmost());
    }
    /// Key by key: as a whole the text must not stand anywhere but in the entry.
    void type() {
        program.screen.type("x");
        program.screen.press(GDK_KEY_BackSpace);
        for (std::size_t index = 0; index < secret.size(); ++index)
            program.screen.type(std::string(1, secret.at(index)));
        auto* focus = gtk::ModalWindow::topmost()->get_focus();
        ASSERT_NE(focus, nullptr);
        RunningProgram::until("it is typed", [&] {
            return gtk_editable_get_position(GTK_EDITABLE(focus->gobj())) ==
                   static_cast<int>(secret.size());
        });
        EXPECT_THAT(places(), Not(IsEmpty()));
    }
    std::vector<std::string> places() const { return rig::findInMemory(::getpid(), secret); }

    RunningProgram program;
    gtk::GtkAlertPresenter presenter{program.host, hurryingClock()};
    gtk::GtkPasskeySheetFactory factory{hurryingClock()};
    std::unique_ptr<authenticator::PasskeySheet> sheet;
    const rig::DisguisedText secret = rig::DisguisedText::random(24);
    Length length = std::make_shared<std::size_t>(0);
};

TEST_P(SecretMemory, HoldsNothingAfterTheAnswer) {
    program.run([&] {
        open();
        type();
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("it is taken", [&] { return *length == secret.size(); });
        EXPECT_THAT(places(), IsEmpty());
        sheet.reset();
        RunningProgram::settle();
        EXPECT_THAT(places(), IsEmpty());
    });
}

TEST_P(SecretMemory, HoldsNothingAfterItIsCancelled) {
    program.run([&] {
        open();
        type();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the dialog is gone",
                              [] { return gtk::ModalWindow::topmost() == nullptr; });
        RunningProgram::settle();
        EXPECT_THAT(places(), IsEmpty());
    });
}

TEST_P(SecretMemory, IsShieldedFromOthersWhileTheDialogIsOpen) {
    program.run([&] {
        EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1);
        open();
        EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 0);
        type();
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("it is taken", [&] { return *length == secret.size(); });
        sheet.reset();
        RunningProgram::settle();
        EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1);
    });
}

TEST(AlertWithoutAField, LeavesTheProcessAsItIs) {
    RunningProgram program;
    gtk::GtkAlertPresenter presenter{program.host, hurryingClock()};
    program.run([&] {
        platform::Alert alert;
        alert.messageText = "Done";
        spawn(show(presenter, std::move(alert), nullptr));
        program.untilActive(program.window("Done"));
        EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, SecretMemory,
                         testing::Values(Place::prompt, Place::maskedQuestion,
                                         Place::visibleQuestion),
                         [](const testing::TestParamInfo<Place>& place) {
                             return place.param == Place::prompt           ? "Prompt"
                                    : place.param == Place::maskedQuestion ? "MaskedQuestion"
                                                                           : "VisibleQuestion";
                         });

} // namespace
} // namespace kelo::tests
