// The keyring is locked, denied or dies, and the session bus goes.
#include "faults/FaultFixture.h"

#include "component/passkey/UnansweredPrompter.h"

namespace kelo::faults {

namespace {

constexpr const char* locked = "Your keyring is locked, and a passkey needs it. Try again and "
                               "unlock the keyring when it asks.";
constexpr const char* gone =
    "No keyring is running, and without one a passkey cannot be kept safe. Start your desktop's "
    "keyring or password manager and try again.";

class KeyringFaults : public FaultFixture {
protected:
    void restartKeyring() {
        killKeyring();
        startKeyring();
    }
};

} // namespace

// Nobody on this bus shows the keyring's question, which the keyring takes for a refusal.
TEST_F(KeyringFaults, LockedAndDeniedIsSaidAtTheSignIn) {
    ASSERT_TRUE(bus->lockKeyring());
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    user.awaitError(locked);
    restartKeyring();
    signIn();
    expectNothingIsLost();
}

TEST_F(KeyringFaults, LockedAndDeniedIsSaidAtTheRegistration) {
    signInAndRegister();
    ASSERT_TRUE(bus->lockKeyring());
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert(locked);
    user.closeAlert();
    restartKeyring();
    expectNothingIsLost();
}

TEST_F(KeyringFaults, AQuestionOfTheKeyringThatNobodyAnswersEndsWithKelo) {
    const UnansweredPrompter prompter(bus->connection());
    ASSERT_TRUE(bus->lockKeyring());
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    ASSERT_TRUE(prompter.waitUntilAsked());
    kelo->end();
    restartKeyring();
    expectNothingIsLost();
}

TEST_F(KeyringFaults, KilledInTheMiddleOfASignInIsSaid) {
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    killKeyring();
    user.answerSheet(desktop().loginPassword);
    user.awaitError(gone);
    startKeyring();
    signIn();
    expectNothingIsLost();
}

TEST_F(KeyringFaults, KilledInTheMiddleOfARegistrationIsSaid) {
    signInAndRegister();
    user.agreeOnSheet();
    killKeyring();
    user.answerSheet(desktop().loginPassword);
    user.awaitAlert(gone);
    user.closeAlert();
    startKeyring();
    expectNothingIsLost();
}

// The session is over then, and programs end with it.
TEST_F(KeyringFaults, ABusThatGoesInTheMiddleOfASignInTakesKeloAlongAndLosesNothing) {
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    killBus();
    EXPECT_TRUE(kelo->awaitExit(rig::deadline));
    startBus();
    startKeyring();
    expectNothingIsLost();
}

// Only the screen tells what happens: the accessibility bus is found through the session's.
TEST_F(KeyringFaults, ABusThatIsNotThereAtTheStartLosesNothing) {
    endKelo();
    killBus();
    environment["AT_SPI_BUS_ADDRESS"] = "";
    environment["GTK_A11Y"] = "none";
    startKelo();
    desktop().tree.awaitThat("the window is open", [] {
        const auto shown = desktop().screen.windows.managed();
        return !shown.empty() && shown.front().title == "Kelo";
    });
    environment.erase("GTK_A11Y");
    startBus();
    startKeyring();
    expectNothingIsLost();
}

} // namespace kelo::faults
