// A program that Kelo relies on is killed, stands still or lies.
#include "faults/FaultFixture.h"

#include <csignal>
#include <fstream>

namespace kelo::faults {

namespace {

namespace fs = std::filesystem;

constexpr const char* helper = "kelo-verify-user";
constexpr const char* networkProcess = "WebKitNetworkProcess";
constexpr const char* notVerified =
    "Kelo could not verify that it is you, so the passkey was not used. Please try again.";
constexpr const char* webProcess = "WebKitWebProcess";

class ProcessFaults : public FaultFixture {
protected:
    /// From its next start on, Kelo takes a helper that behaves like this. Kelo takes the one that
    /// lies next to it.
    void replaceHelper(const std::string& behaviour) {
        programs = folder.path() / "replaced";
        const auto program = fs::path("libexec") / "kelo" / "kelo";
        fs::create_directories((programs / program).parent_path());
        fs::copy_file(build() / "kelo", programs / "kelo");
        fs::copy_file(build() / program, programs / program);
        fs::copy_file(KELO_MISBEHAVING_HELPER, programs / helper);
        environment["KELO_TEST_BEHAVIOUR"] = behaviour;
        startAgain();
        comeToTheLoginPage();
    }
    void bringHelperBack() {
        programs = build();
        environment.erase("KELO_TEST_BEHAVIOUR");
    }
};

class LyingHelper : public ProcessFaults, public testing::WithParamInterface<const char*> {};

} // namespace

TEST_F(ProcessFaults, AHelperThatIsKilledVerifiesNobody) {
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    killAndAwaitEnd(awaitProcess(helper));
    user.awaitError(notVerified);
    signIn();
    expectNothingIsLost();
}

TEST_F(ProcessFaults, AHelperThatStandsStillCanBeLeft) {
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    const pid_t stopped = awaitProcess(helper);
    kill(stopped, SIGSTOP);
    user.answerSheet(desktop().loginPassword);
    user.press("Escape");
    user.awaitError("The passkey request was cancelled.");
    signIn();
    expectNothingIsLost();
}

TEST_P(LyingHelper, VerifiesNobody) {
    replaceHelper(GetParam());
    user.pressSignInWithPasskey();
    user.pressContinue();
    user.awaitError(notVerified);
    bringHelperBack();
    expectNothingIsLost();
}

INSTANTIATE_TEST_SUITE_P(ProcessFaults, LyingHelper,
                         testing::Values("verified without being asked", "verified, then dies",
                                         "garbage", "says nothing", "half a message"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::erase_if(name, [](char c) { return c == ' ' || c == ','; });
                             return name;
                         });

TEST_F(ProcessFaults, AKilledNetworkProcessIsReplacedAndCostsOneClick) {
    signIn();
    killAndAwaitEnd(awaitProcess(networkProcess));
    user.click(rig::pageButton("Sign out"));
    user.click(rig::pageButton("Try again"));
    user.signOut();
    signIn();
    expectNothingIsLost();
}

TEST_F(ProcessFaults, AKilledNetworkProcessTakesNoSessionAlong) {
    signIn();
    killAndAwaitEnd(awaitProcess(networkProcess));
    startAgain();
    user.awaitSignedIn(e2e::ada.firstName);
}

TEST_F(ProcessFaults, APageWhoseProcessIsKilledComesBack) {
    signIn();
    killAndAwaitEnd(awaitProcess(webProcess));
    user.click(rig::pageButton("Try again"));
    user.awaitSignedIn(e2e::ada.firstName);
    user.signOut();
    expectNothingIsLost();
}

} // namespace kelo::faults
