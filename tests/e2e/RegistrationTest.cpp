#include "e2e/ProgramFixture.h"

namespace kelo::e2e {

namespace {

using rig::button;
using rig::label;

class Registration : public ProgramFixture {};

} // namespace

TEST_F(Registration, WithAWrongCodeIsRefusedByTheService) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    user.chooseRegister();
    user.answerPrompt("wrong");
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert("Registration failed: Invalid code.");
}

TEST_F(Registration, WhileSignedOutAsksToLogInFirst) {
    user.chooseRegister();
    user.answerPrompt(ada.password);
    user.awaitAlert("Log in first, then register a passkey.");
}

TEST_F(Registration, CancelledAtThePromptEndsSilently) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    user.chooseRegister();
    user.awaitPrompt();
    desktop().screen.keyboard.type(ada.password);
    user.press("Escape");
    desktop().tree.awaitGone(button("Registreer"));
    // The command can be chosen again at once, and there is no alert to be closed before.
    user.chooseRegister();
    user.awaitPrompt();
    EXPECT_FALSE(desktop().tree.find(label("Passkey")));
}

TEST_F(Registration, CancelledAtTheSheetSaysSoInAnAlert) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    user.chooseRegister();
    user.answerPrompt(ada.password);
    user.cancelSheet();
    user.awaitAlert("The passkey request was cancelled.");
}

} // namespace kelo::e2e
