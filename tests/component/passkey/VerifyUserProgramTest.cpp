#include "HelperFixture.h"

// The real helper and the real libpam, and a test in place of Kelo.

namespace kelo {

namespace {

class VerifyUserProgram : public HelperFixture {};

} // namespace

TEST_F(VerifyUserProgram, EndsWhenItsInputClosesWhileAModuleWaits) {
    service("auth required " + std::string(talkative) +
            " finger\naccount required pam_permit.so\n");
    start();
    begin();
    EXPECT_EQ(receive().payload, "Swipe your finger");
    ::close(std::exchange(socket, -1));
    const int status = waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) << status;
}

TEST_F(VerifyUserProgram, EndsWhenItsInputClosesBeforeItBegan) {
    start();
    ::close(std::exchange(socket, -1));
    const int status = waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) << status;
}

TEST_F(VerifyUserProgram, EndsOnNonsenseWithoutTouchingPam) {
    service(everybody);
    for (const char* nonsense : {"password\n", "A"}) {
        start();
        send(nonsense);
        ::shutdown(socket, SHUT_WR);
        const auto message = receive();
        EXPECT_EQ(message.payload, "the helper closed its end");
        const int status = waitForEnd();
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) << status;
        ::close(std::exchange(socket, -1));
    }
}

TEST_F(VerifyUserProgram, EndsOnAMessageThatBeginsNothing) {
    service(everybody);
    start();
    const auto bytes =
        authorization::encode(authorization::MessageType::answer, std::string(16, 'm'));
    send(std::string_view(bytes.data(), bytes.size()));
    EXPECT_EQ(receive().payload, "the helper closed its end");
    const int status = waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) << status;
}

TEST_F(VerifyUserProgram, EndsByItselfWhenNobodyListensAnyMore) {
    service(everybody);
    start();
    ::shutdown(socket, SHUT_RD);
    begin();
    const int status = waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) << status;
}

TEST_F(VerifyUserProgram, ReturnsTheNonceOfTheRunWithItsResult) {
    service(everybody);
    start();
    begin();
    EXPECT_EQ(receive().payload, "+" + std::string(16, 'm'));
    const int status = waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) << status;
}

TEST_F(VerifyUserProgram, TakesNoAnswerThatIsNone) {
    service(passwordLines());
    start();
    begin();
    EXPECT_EQ(receive().type, authorization::MessageType::hiddenPrompt);
    const auto bytes =
        authorization::encode(authorization::MessageType::information, "open sesame");
    send(std::string_view(bytes.data(), bytes.size()));
    const auto message = receive();
    EXPECT_NE(message.payload.substr(0, 1), "+");
}

} // namespace kelo
