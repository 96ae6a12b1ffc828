#include "component/gtk/PasskeysWindowFixture.h"
#include "linux/gtk/kit/ProgramWindow.h"

namespace kelo::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// What the window does around a deletion.
class PasskeyDeletion : public PasskeysWindowFixture {};

TEST_F(PasskeyDeletion, DeletesByItsButtonAndTheKeyboardGoesOnAtTheNextRow) {
    for (const char* account : {"ada", "grace", "joan"})
        inventory->add(account);
    whileOpen([&] {
        program.click(deleteButton("grace"));
        answer();
        EXPECT_THAT(inventory->asked, ElementsAre("grace"));
        EXPECT_EQ(gtk::WindowHandle::resolve(inventory->anchor), &window());
        EXPECT_THAT(texts(), Contains("The passkey was deleted."));
        EXPECT_THAT(texts(), Not(Contains("grace")));
        EXPECT_EQ(focused(), "joan");
    });
}

TEST_F(PasskeyDeletion, DeletesByItsKeyAndTheKeyboardStaysInTheList) {
    inventory->add("ada");
    inventory->add("grace");
    whileOpen([&] {
        focus("grace");
        program.screen.press(GDK_KEY_Delete);
        answer();
        EXPECT_EQ(focused(), "ada") << "the last one was deleted";
        program.screen.press(GDK_KEY_KP_Delete);
        answer();
        EXPECT_THAT(inventory->asked, ElementsAre("grace", "ada"));
        EXPECT_THAT(texts(), Contains(none));
        ASSERT_NE(window().get_focus(), nullptr);
        EXPECT_TRUE(labelSaying(*window().get_focus(), none)) << "where it can be read out";
    });
}

TEST_F(PasskeyDeletion, OneDeletionIsAskedForAtATime) {
    inventory->add("ada");
    inventory->add("grace");
    whileOpen([&] {
        program.screen.press(GDK_KEY_Delete);
        program.screen.press(GDK_KEY_Delete);
        program.click(deleteButton("grace"));
        RunningProgram::settle();
        EXPECT_THAT(inventory->asked, ElementsAre("ada"));
        answer();
        program.screen.press(GDK_KEY_Delete);
        answer();
        EXPECT_THAT(inventory->asked, ElementsAre("ada", "grace"));
    });
}

TEST_F(PasskeyDeletion, RefusalIsSaidUntilTheNextQuestionAndNothingIsLost) {
    inventory->add("ada");
    inventory->add("grace");
    inventory->result = {false, "Nothing was deleted."};
    whileOpen([&] {
        focus("grace");
        program.screen.press(GDK_KEY_Delete);
        answer();
        EXPECT_THAT(texts(), Contains("Nothing was deleted."));
        EXPECT_EQ(focused(), "grace");
        program.screen.press(GDK_KEY_Delete);
        RunningProgram::until("another question", [&] { return inventory->asked.size() == 2; });
        RunningProgram::settle();
        EXPECT_THAT(texts(), Not(Contains("Nothing was deleted.")));
        answer();
    });
}

TEST_F(PasskeyDeletion, FailureToDeleteIsSaid) {
    inventory->add("ada");
    inventory->failsToRemove = true;
    whileOpen([&] {
        program.screen.press(GDK_KEY_Delete);
        answer();
        EXPECT_THAT(texts(), Contains("The disk is full."));
        EXPECT_THAT(texts(), Contains("ada"));
    });
}

TEST_F(PasskeyDeletion, RowThatAnotherProgramHasDeletedGoes) {
    inventory->add("ada");
    inventory->add("grace");
    inventory->result = {false, "This passkey is no longer on this computer."};
    whileOpen([&] {
        inventory->all.erase(inventory->all.begin());
        program.screen.press(GDK_KEY_Delete);
        answer();
        EXPECT_THAT(texts(), Contains("This passkey is no longer on this computer."));
        EXPECT_THAT(texts(), Not(Contains("ada")));
        EXPECT_EQ(focused(), "grace");
    });
}

TEST_F(PasskeyDeletion, ClosedWhileItDeletesItEndsTheQuestion) {
    inventory->add("ada");
    whileOpen([&] {
        program.screen.press(GDK_KEY_Delete);
        RunningProgram::until("a deletion is under way", [&] { return inventory->underWay == 1; });
        window().close();
        EXPECT_EQ(inventory->underWay, 0);
        RunningProgram::settle();
        EXPECT_FALSE(isOpen());
        // What comes back late finds nobody.
        std::exchange(inventory->answer, std::nullopt)->resume();
        RunningProgram::settle();
        open();
        EXPECT_THAT(texts(), Contains("ada"));
    });
}

} // namespace
} // namespace kelo::tests
