#include "e2e/ProgramFixture.h"

namespace kelo::e2e {

namespace {

/// What a screen reader is told of each window; those of pages, updates and downloads are looked at
/// by the tests that open them.
class Accessibility : public ProgramFixture {
protected:
    void openAndLook(const char* menu, const char* entry, const char* title) const {
        user.chooseFromMenu(menu, entry);
        const rig::Wanted window{rig::Place::windows, {rig::Role::window}, title};
        desktop().tree.await(window);
        look(title);
        user.press("Escape");
        desktop().tree.awaitGone(window);
    }
};

} // namespace

TEST_F(Accessibility, EverythingInTheWindowsHasAName) {
    user.awaitLoginPage();
    look("main-window");
    for (const char* menu : {"Kelo", "Account", "View"}) {
        user.click(rig::menu(menu));
        desktop().tree.await({rig::Place::windows, {rig::Role::menu}, menu});
        look(menu);
        user.press("Escape");
        desktop().tree.awaitGone({rig::Place::windows, {rig::Role::menu}, menu});
    }
    openAndLook("Kelo", "Settings…", "Settings");
    openAndLook("Kelo", "Keyboard Shortcuts", "Keyboard Shortcuts");
    openAndLook("Kelo", "About Kelo", "About Kelo");
    user.chooseFromMenu("View", "Find…");
    desktop().tree.await(rig::button("Next"));
    look("find-bar");
}

TEST_F(Accessibility, EverythingInTheDialogsOfARegistrationHasAName) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    user.chooseRegister();
    user.awaitPrompt();
    look("prompt");
    user.answerPrompt(ada.password);
    user.awaitSheet();
    look("sheet");
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert(registered);
    look("alert");
}

} // namespace kelo::e2e
