// The service is down, silent, or says what is not so.
#include "faults/FaultFixture.h"

#include "testing/rig/StandInService.h"

#include <csignal>

namespace kelo::faults {

namespace {

constexpr const char* optionsPath = "/api/account/passkey/auth/options";
constexpr const char* refused = "Could not connect to localhost: Connection refused.";
constexpr const char* unreadable =
    "The service sent a reply that is not valid JSON. Please try again later.";
constexpr const char* noOptions = "Could not start passkey login.";
constexpr const char* tooLong =
    "The reply from localhost was longer than 1 MiB and was dropped. Try again later.";

class ServiceFaults : public FaultFixture {
protected:
    void TearDown() override {
        liar.reset();
        FaultFixture::TearDown();
    }

    std::unique_ptr<rig::StandInService> liar;
};

struct Lie {
    const char* name;
    std::string options;
    const char* sentence;
};

class Lies : public ServiceFaults, public testing::WithParamInterface<Lie> {};

} // namespace

TEST_F(ServiceFaults, DownDuringASignInIsSaidAndTheNextOneWorks) {
    user.pressSignInWithPasskey();
    user.agreeOnSheet();
    service.reset();
    user.answerSheet(desktop().loginPassword);
    user.awaitError(refused);
    startService();
    signIn();
    expectNothingIsLost();
}

TEST_F(ServiceFaults, DownDuringARegistrationIsSaidAndThePasskeyWorks) {
    signInAndRegister();
    user.agreeOnSheet();
    service.reset();
    user.answerSheet(desktop().loginPassword);
    user.awaitAlert(refused);
    user.closeAlert();
    startService();
    expectNothingIsLost();
}

TEST_F(ServiceFaults, DownAtTheStartIsSaidAndTriedAgain) {
    service.reset();
    startAgain();
    user.awaitDrawn(rig::pageButton("Try again"));
    startService();
    user.click(rig::pageButton("Try again"));
    user.awaitLoginPage();
    expectNothingIsLost();
}

TEST_F(ServiceFaults, SilenceOfAMinuteIsGivenUp) {
    kill(service->identifier(), SIGSTOP);
    user.pressSignInWithPasskey();
    const auto silent = rig::alert("localhost did not answer within 60 seconds. Try again later.");
    EXPECT_TRUE(desktop().bus.await([&] { return desktop().tree.find(silent).has_value(); },
                                    std::chrono::seconds(100)));
    kill(service->identifier(), SIGCONT);
    signIn();
    expectNothingIsLost();
}

TEST_P(Lies, AreNotBelieved) {
    service.reset();
    liar = std::make_unique<rig::StandInService>(
        authority, std::map<std::string, std::string>{{optionsPath, GetParam().options}});
    user.pressSignInWithPasskey();
    user.awaitError(GetParam().sentence);
    EXPECT_FALSE(desktop().tree.find(rig::button("Continue")));
    EXPECT_TRUE(kelo->isRunning());
    liar.reset();
    startService();
    signIn();
    expectNothingIsLost();
}

INSTANTIATE_TEST_SUITE_P(
    ServiceFaults, Lies,
    testing::Values(Lie{"APage", "<!doctype html><title>Maintenance</title>", unreadable},
                    Lie{"Nothing", "", unreadable}, Lie{"AList", "[]", noOptions},
                    Lie{"NoText", R"({"challenge": 5})", noOptions},
                    Lie{"NoBase64", R"({"challenge": "?"})", noOptions},
                    Lie{"HalfAnObject", R"({"challenge": "AAAA)", unreadable},
                    Lie{"ADeepList", std::string(400'000, '['), unreadable},
                    Lie{"TwoMebibytes", "\"" + std::string(2 << 20, 'x') + "\"", tooLong}),
    [](const auto& lie) { return lie.param.name; });

} // namespace kelo::faults
