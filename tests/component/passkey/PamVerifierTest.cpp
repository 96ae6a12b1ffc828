#include "VerificationFixture.h"

#include "linux/authorization/protocol/VerificationProtocol.h"

#include <pwd.h>
#include <security/pam_appl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>

// The real helper and the real libpam, which pam_wrapper turns to a service file of the test.

namespace kelo {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const matrix = KELO_PAM_MATRIX;
const char* const talkative = KELO_TALKATIVE_PAM_MODULE;

class PamVerifierTest : public VerificationFixture {
protected:
    PamVerifierTest() {
        std::filesystem::create_directory(services);
        const passwd* user = ::getpwuid(::getuid());
        std::ofstream(passwords) << user->pw_name << ":open sesame:kelo\n";
    }
    void service(const std::string& lines) const { std::ofstream(services / "kelo") << lines; }
    std::string passwordLines() const {
        const std::string arguments = std::string(matrix) + " passdb=" + passwords + "\n";
        return "auth required " + arguments + "account required " + arguments;
    }
    /// A line's end: the module of the test with this habit.
    static std::string habit(const std::string& name) {
        return std::string(talkative) + " " + name + "\n";
    }
    void authenticatesWith(const std::string& name) const {
        service("auth required " + habit(name) + "account required pam_permit.so\n");
    }
    std::vector<std::string> environment() const {
        auto variables = forSanitizers();
        variables.emplace_back("LD_PRELOAD=libpam_wrapper.so");
        variables.emplace_back("PAM_WRAPPER=1");
        variables.push_back("PAM_WRAPPER_SERVICE_DIR=" + services.string());
        return variables;
    }

    std::filesystem::path services = folder.path() / "services";
    std::string passwords = folder.path() / "passwords";
    authorization::PamVerifier verifier{KELO_VERIFY_USER, environment()};
};

} // namespace

TEST_F(PamVerifierTest, TheRightPasswordVerifies) {
    service(passwordLines());
    person.answers = {"open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words, ElementsAre("? Password: "));
    EXPECT_EQ(person.cancelAction, nullptr);
}

TEST_F(PamVerifierTest, AWrongPasswordSaysSoAndAsksAgain) {
    service(passwordLines());
    person.answers = {"wrong", "open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words,
                ElementsAre("? Password: ", "e Wrong password. Try again.", "? Password: "));
}

TEST_F(PamVerifierTest, ThreeWrongPasswordsFail) {
    service(passwordLines());
    person.answers = {"one", "two", "three", "open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::failed);
    EXPECT_THAT(person.words,
                ElementsAre("? Password: ", "e Wrong password. Try again.",
                            "? Password: ", "e Wrong password. Try again.", "? Password: "));
}

TEST_F(PamVerifierTest, AnEmptyOrOverlongPasswordIsWrong) {
    service(passwordLines());
    person.answers = {"", std::string(4096, 'x'), "open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::verified);
    person.answers = {std::string(4097, 'x'), "open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::failed);
    person.answers = {std::string("open sesame\0", 12)};
    EXPECT_EQ(verify(verifier), Outcome::failed);
}

TEST_F(PamVerifierTest, CancellingTheQuestionCancels) {
    service(passwordLines());
    EXPECT_EQ(verify(verifier), Outcome::cancelled);
}

TEST_F(PamVerifierTest, OneVerificationAfterAnotherWorks) {
    service(passwordLines());
    person.answers = {"open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_EQ(verify(verifier), Outcome::cancelled);
    person.answers = {"open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::verified);
}

TEST_F(PamVerifierTest, AnAccountThatMayNotLogInFailsWithoutAnotherTry) {
    service("auth required " + std::string(matrix) + " passdb=" + passwords +
            "\naccount required pam_deny.so\n");
    person.answers = {"open sesame", "open sesame"};
    EXPECT_EQ(verify(verifier), Outcome::failed);
    EXPECT_EQ(person.words.size(), 1U);
}

TEST_F(PamVerifierTest, AnyReasonAgainstTheAccountFailsWithoutAnotherTry) {
    for (const int result : {PAM_AUTH_ERR, PAM_USER_UNKNOWN, PAM_PERM_DENIED, PAM_ACCT_EXPIRED,
                             PAM_NEW_AUTHTOK_REQD}) {
        service("auth required pam_permit.so\naccount required " +
                habit("none result=" + std::to_string(result)));
        EXPECT_EQ(verify(verifier), Outcome::failed) << result;
    }
    EXPECT_THAT(person.words, IsEmpty());
}

TEST_F(PamVerifierTest, AFingerThatIsNotRecognizedMayTryAgain) {
    for (const int result :
         {PAM_AUTH_ERR, PAM_USER_UNKNOWN, PAM_PERM_DENIED, PAM_CRED_INSUFFICIENT}) {
        authenticatesWith("none result=" + std::to_string(result));
        person.words.clear();
        EXPECT_EQ(verify(verifier), Outcome::failed) << result;
        EXPECT_THAT(person.words,
                    ElementsAre("e Not recognized. Try again.", "e Not recognized. Try again."));
    }
}

TEST_F(PamVerifierTest, TooManyTriesForTheModuleAreEnough) {
    authenticatesWith("none result=" + std::to_string(PAM_MAXTRIES));
    EXPECT_EQ(verify(verifier), Outcome::failed);
    EXPECT_THAT(person.words, IsEmpty());
}

TEST_F(PamVerifierTest, AModuleThatCannotSayLeavesItUndecided) {
    for (const int result : {PAM_AUTHINFO_UNAVAIL, PAM_SYSTEM_ERR, PAM_ABORT}) {
        authenticatesWith("none result=" + std::to_string(result));
        EXPECT_EQ(verify(verifier), Outcome::undecided) << result;
    }
    service("auth required pam_permit.so\naccount required " +
            habit("none result=" + std::to_string(PAM_SYSTEM_ERR)));
    EXPECT_EQ(verify(verifier), Outcome::undecided);
}

TEST_F(PamVerifierTest, AnEmptyPasswordOfTheAccountIsNeverEnough) {
    service("auth required " + habit("flags") + "account required " + habit("flags"));
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words,
                ElementsAre("i empty passwords refused", "i empty passwords refused"));
}

TEST_F(PamVerifierTest, QuestionsSayWhetherTheirAnswerMayBeSeen) {
    authenticatesWith("asks");
    person.answers = {"zoe", "1234"};
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words, ElementsAre("! Name: ", "? Code: "));
}

TEST_F(PamVerifierTest, ASecretThatWasWrongIsNamedAPassword) {
    authenticatesWith("asks");
    person.answers = {"zoe", "1", "zoe", "1234"};
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_EQ(person.words.at(2), "e Wrong password. Try again.");
}

TEST_F(PamVerifierTest, AModuleWithoutWordsIsShownWithoutWords) {
    authenticatesWith("silent");
    person.answers = {"", ""};
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words, ElementsAre("i ", "e ", "! ", "? "));
}

TEST_F(PamVerifierTest, ConversationsThatNoModuleMayHoldAreRefused) {
    authenticatesWith("overdoes");
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words, ElementsAre("i all refused"));
}

TEST_F(PamVerifierTest, AModuleFindsNothingOnStandardInput) {
    authenticatesWith("reads");
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words, ElementsAre("i standard input is empty"));
}

TEST_F(PamVerifierTest, AModuleThatIsNotThereLeavesItUndecided) {
    service("auth required /no/such/module.so\naccount required pam_permit.so\n");
    EXPECT_EQ(verify(verifier), Outcome::undecided);
    EXPECT_THAT(person.words, IsEmpty());
}

TEST_F(PamVerifierTest, WhatAModulePrintsDoesNotDisturbTheTalk) {
    service("auth required " + std::string(talkative) +
            " prints\naccount required pam_permit.so\n");
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words, ElementsAre("e Careful!"));
}

TEST_F(PamVerifierTest, TheHelperIsSealedAgainstOthers) {
    service("auth required " + std::string(talkative) +
            " sealed\naccount required pam_permit.so\n");
    EXPECT_EQ(verify(verifier), Outcome::verified);
    EXPECT_THAT(person.words, ElementsAre("i dumpable 0, core 0, parent's end 9"));
}

TEST_F(PamVerifierTest, AFingerprintReadersWordsShowAndCancelEndsIt) {
    service("auth required " + std::string(talkative) +
            " finger\naccount required pam_permit.so\n");
    start(verifier);
    ASSERT_TRUE(waitForWords(1));
    EXPECT_THAT(person.words, ElementsAre("i Swipe your finger"));
    person.pressCancel();
    ASSERT_TRUE(ScopedMainLoop::runUntil([this] { return outcome.has_value(); }));
    EXPECT_EQ(*outcome, Outcome::cancelled);
}

/// The helper by itself, without the verifier that would kill it.
class VerifyUserProgram : public PamVerifierTest {
protected:
    void start() {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        std::vector<std::string> variables = environment();
        child = ::fork();
        if (child == 0) {
            for (std::string& variable : variables)
                ::putenv(variable.data());
            ::dup2(ends[1], STDIN_FILENO);
            ::dup2(ends[1], STDOUT_FILENO);
            ::execl(KELO_VERIFY_USER, KELO_VERIFY_USER, nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        socket = ends[0];
    }
    void send(std::string_view bytes) const {
        EXPECT_EQ(::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    void begin() const {
        const auto bytes =
            authorization::encode(authorization::MessageType::begin, std::string(16, 'm'));
        send(std::string_view(bytes.data(), bytes.size()));
    }
    authorization::Message receive() {
        while (true) {
            if (auto message = reader.next())
                return std::move(*message);
            char byte = 0;
            if (::read(socket, &byte, 1) != 1)
                return {authorization::MessageType::result, "the helper closed its end"};
            reader.feed(std::span(&byte, 1));
        }
    }
    int waitForEnd() {
        int status = 0;
        EXPECT_EQ(::waitpid(std::exchange(child, -1), &status, 0) > 0, true);
        return status;
    }
    ~VerifyUserProgram() override {
        if (child > 0)
            ::kill(child, SIGKILL);
        if (socket >= 0)
            ::close(socket);
    }

    pid_t child = -1;
    int socket = -1;
    authorization::MessageReader reader;
};

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
    service("auth required pam_permit.so\naccount required pam_permit.so\n");
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
    service("auth required pam_permit.so\naccount required pam_permit.so\n");
    start();
    const auto bytes =
        authorization::encode(authorization::MessageType::answer, std::string(16, 'm'));
    send(std::string_view(bytes.data(), bytes.size()));
    EXPECT_EQ(receive().payload, "the helper closed its end");
    const int status = waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) << status;
}

TEST_F(VerifyUserProgram, EndsByItselfWhenNobodyListensAnyMore) {
    service("auth required pam_permit.so\naccount required pam_permit.so\n");
    start();
    ::shutdown(socket, SHUT_RD);
    begin();
    const int status = waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) << status;
}

TEST_F(VerifyUserProgram, ReturnsTheNonceOfTheRunWithItsResult) {
    service("auth required pam_permit.so\naccount required pam_permit.so\n");
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
