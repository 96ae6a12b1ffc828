#include "e2e/ProgramFixture.h"

namespace kelo::e2e {

namespace {

using rig::alert;
using rig::choice;

constexpr const char* cancelled = "The passkey request was cancelled.";

class SignIn : public ProgramFixture {};

} // namespace

TEST_F(SignIn, WorksWithThePasskeyRegisteredJustBefore) {
    becomeOwnerOfPasskey(ada);
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    user.awaitSignedIn("Ada");
}

TEST_F(SignIn, SaysThatThePasswordIsWrongAndTakesTheRightOne) {
    becomeOwnerOfPasskey(ada);
    user.pressSignInWithPasskey();
    user.confirmSheet("not the password");
    desktop().tree.await(alert("Wrong password. Try again."));
    look("wrong");
    user.answerSheet(desktop().loginPassword);
    user.awaitSignedIn("Ada");
}

TEST_F(SignIn, CancelledAtTheSheetSaysSoBelowTheButton) {
    becomeOwnerOfPasskey(ada);
    user.pressSignInWithPasskey();
    user.cancelSheet();
    user.awaitError(cancelled);
}

TEST_F(SignIn, CancelledAtThePasswordSaysSoBelowTheButton) {
    becomeOwnerOfPasskey(ada);
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    user.press("Escape");
    user.awaitError(cancelled);
}

TEST_F(SignIn, WithoutAnyPasskeySaysWhatToDo) {
    user.pressSignInWithPasskey();
    user.awaitError(
        "There is no passkey for localhost on this computer. Sign in another way, then register "
        "one from the Account menu.");
}

TEST_F(SignIn, RefusedByTheServiceIsShown) {
    becomeOwnerOfPasskey(ada);
    // A service that has forgotten everything does not know the passkey.
    startService();
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    user.awaitError("Passkey was not accepted.");
}

TEST_F(SignIn, SaysThatTheServiceIsDown) {
    service.reset();
    user.pressSignInWithPasskey();
    user.awaitError("Could not connect to localhost: Connection refused.");
}

TEST_F(SignIn, SendsNothingToACertificateNobodyVouchesFor) {
    authority = folder.path() / "foreign-authority";
    rig::DemoService::makeAuthority(build(), authority, folder.path() / "authority.log");
    startService();
    user.pressSignInWithPasskey();
    user.awaitError("The certificate of localhost is not trusted on this computer, so nothing was "
                    "sent. Ask those who run the service.");
}

TEST_F(SignIn, AsksWhichOfSeveralAccounts) {
    becomeOwnerOfPasskey(ada);
    becomeOwnerOfPasskey(grace);
    user.pressSignInWithPasskey();
    user.awaitSheet();
    desktop().tree.await(choice("ada@example.org"));
    user.click(choice("grace@example.org"));
    look("choice");
    user.confirmSheet(desktop().loginPassword);
    user.awaitSignedIn("Grace");
}

TEST_F(SignIn, SurvivesTheNextStart) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    endKelo();
    startKelo();
    user.awaitSignedIn("Ada");
}

} // namespace kelo::e2e
