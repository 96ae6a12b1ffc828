#include "PamFixture.h"

#include "testing/TemporaryFolder.h"

#include <security/pam_appl.h>

#include <filesystem>
#include <fstream>

// The real helper and the real libpam.

namespace kelo {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class PamVerifierTest : public PamFixture {};

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

TEST(VerificationMeans, AreAsTheHelperSays) {
    using authorization::VerificationMeans;
    using authorization::verificationMeans;
    EXPECT_EQ(verificationMeans("/bin/true"), VerificationMeans::complete);
    EXPECT_EQ(verificationMeans("/bin/false"), VerificationMeans::noService);
    EXPECT_EQ(verificationMeans("/bin/no such program"), VerificationMeans::noHelper);
    const test::TemporaryFolder folder;
    const auto helper = folder / "helper";
    for (const char* end : {"exit 127", "kill -9 $$"}) {
        std::ofstream(helper) << "#!/bin/sh\n" << end << "\n";
        std::filesystem::permissions(helper, std::filesystem::perms::owner_all);
        EXPECT_EQ(verificationMeans(helper), VerificationMeans::noHelper) << end;
    }
}

} // namespace kelo
