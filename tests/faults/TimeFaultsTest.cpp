// The clock jumps, and the computer sleeps.
#include "faults/FaultFixture.h"

#include "component/session/StandInServices.h"
#include "testing/rig/ProcessTree.h"

#include <csignal>
#include <fstream>

namespace kelo::faults {

namespace {

constexpr std::int64_t day = 24 * 60 * 60;

class ClockFaults : public FaultFixture, public testing::WithParamInterface<std::int64_t> {
protected:
    void SetUp() override {
        shiftClock(0);
        environment["LD_PRELOAD"] = KELO_SHIFTED_CLOCK_LIBRARY;
        environment["KELO_SHIFTED_CLOCK"] = shift;
        FaultFixture::SetUp();
    }
    void shiftClock(std::int64_t seconds) const {
        // In place: the programs have mapped the file.
        std::fstream file(shift, std::ios::binary | std::ios::in | std::ios::out);
        if (!file)
            file.open(shift, std::ios::binary | std::ios::out);
        file.write(reinterpret_cast<const char*>(&seconds), sizeof seconds);
    }
    const std::filesystem::path shift = folder.path() / "shift";
};

class Sleep : public FaultFixture {
protected:
    void SetUp() override {
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = systemBus.address();
        FaultFixture::SetUp();
    }
    /// As a computer does it: word is sent, everything stands still, and word is sent again.
    void sleepAndWake() const {
        const auto processes = rig::processTree(kelo->identifier());
        manager.prepareForSleep(true);
        for (const pid_t process : processes)
            kill(process, SIGSTOP);
        for (const pid_t process : processes)
            kill(process, SIGCONT);
        manager.prepareForSleep(false);
    }

    std::filesystem::path systemBusFolder = [this] {
        const auto made = folder.path() / "system-bus";
        std::filesystem::create_directories(made);
        return made;
    }();
    SessionBus systemBus{systemBusFolder};
    test::StandInLoginManager manager{systemBus};
};

} // namespace

TEST_P(ClockFaults, AJumpInTheMiddleOfASignInDisturbsNothing) {
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    shiftClock(GetParam());
    user.answerSheet(desktop().loginPassword);
    user.awaitSignedIn(e2e::ada.firstName);
    shiftClock(0);
    expectNothingIsLost();
}

TEST_P(ClockFaults, AJumpInTheMiddleOfARegistrationDisturbsNothing) {
    signInAndRegister();
    user.agreeOnSheet();
    shiftClock(GetParam());
    user.answerSheet(desktop().loginPassword);
    user.awaitAlert(e2e::registered);
    user.closeAlert();
    shiftClock(0);
    expectNothingIsLost();
}

// The certificate of the demo service begins an hour before it was made.
TEST_P(ClockFaults, AStartUnderAWrongClockLosesNothing) {
    endKelo();
    shiftClock(GetParam());
    startKelo();
    desktop().tree.awaitThat("the page or a notice is shown", [&] {
        return desktop().tree.find(rig::button("Try again")) ||
               desktop().tree.find(rig::pageField("Email"));
    });
    shiftClock(0);
    expectNothingIsLost();
}

INSTANTIATE_TEST_SUITE_P(TimeFaults, ClockFaults, testing::Values(day, -day), [](const auto& jump) {
    return std::string(jump.param > 0 ? "ADayAhead" : "ADayBack");
});

TEST_F(Sleep, InTheMiddleOfASignInDisturbsNothing) {
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    sleepAndWake();
    user.answerSheet(desktop().loginPassword);
    user.awaitSignedIn(e2e::ada.firstName);
    expectNothingIsLost();
}

TEST_F(Sleep, InTheMiddleOfARegistrationDisturbsNothing) {
    signInAndRegister();
    user.agreeOnSheet();
    sleepAndWake();
    user.answerSheet(desktop().loginPassword);
    user.awaitAlert(e2e::registered);
    user.closeAlert();
    expectNothingIsLost();
}

TEST_F(Sleep, OnTheHomePageKeepsTheSession) {
    signIn();
    sleepAndWake();
    user.signOut();
    signIn();
}

} // namespace kelo::faults
