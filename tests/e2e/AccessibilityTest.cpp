#include "e2e/ProgramFixture.h"

#include <gmock/gmock.h>

namespace kelo::e2e {

using testing::IsEmpty;

namespace {

/// What a screen reader is told of each window.
class Accessibility : public ProgramFixture {
protected:
    void expectNames(const std::string& moment) const {
        EXPECT_THAT(desktop().tree.badlyNamed(), IsEmpty()) << moment;
    }
    void openAndExpectNames(const char* menu, const char* entry, const char* title) const {
        user.chooseFromMenu(menu, entry);
        const rig::Wanted window{rig::Place::windows, {rig::Role::window}, title};
        desktop().tree.await(window);
        expectNames(title);
        user.press("Escape");
        desktop().tree.awaitGone(window);
    }
};

} // namespace

TEST_F(Accessibility, EverythingInTheWindowsHasAName) {
    user.awaitLoginPage();
    expectNames("the main window");
    for (const char* menu : {"Kelo", "Account", "View"}) {
        user.click(rig::menu(menu));
        desktop().tree.await({rig::Place::windows, {rig::Role::menu}, menu});
        expectNames(menu);
        user.press("Escape");
        desktop().tree.awaitGone({rig::Place::windows, {rig::Role::menu}, menu});
    }
    openAndExpectNames("Kelo", "Settings…", "Settings");
    openAndExpectNames("Kelo", "Keyboard Shortcuts", "Keyboard Shortcuts");
    openAndExpectNames("Kelo", "About Kelo", "About Kelo");
    user.chooseFromMenu("View", "Find…");
    desktop().tree.await(rig::button("Next"));
    expectNames("the find bar");
}

TEST_F(Accessibility, EverythingInTheDialogsOfARegistrationHasAName) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    user.chooseRegister();
    user.awaitPrompt();
    expectNames("the prompt");
    user.answerPrompt(ada.password);
    user.awaitSheet();
    expectNames("the sheet");
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert(registered);
    expectNames("the alert");
}

} // namespace kelo::e2e
