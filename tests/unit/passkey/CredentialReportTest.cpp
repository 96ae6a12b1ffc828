#include "unit/passkey/RegistrationFixture.h"
#include "unit/passkey/SignInFixture.h"

// What the platform is told about a passkey once the service has seen it.

namespace kelo {
namespace {

using Verdict = platform::CredentialReport::Verdict;

const platform::HttpCookie newToken{"__Secure-any.session-token", "new", "localhost"};

class SignInReport : public SignInFixture {
protected:
    /// Signs in up to a callback that is answered so.
    void signInWith(std::optional<int> status, std::string body,
                    std::vector<platform::HttpCookie> cookies = {}) {
        session.reply(200, R"({"challenge":"AAEC"})");
        session.reply(200, R"({"csrfToken":"token"})");
        session.reply(status, std::move(body), std::move(cookies));
        startSignIn();
        confirm();
        EXPECT_FALSE(passkey->busy);
    }
    /// Exactly one report, on the credential of the ceremony.
    void expectReport(Verdict verdict) {
        ASSERT_EQ(desktop.credentialReports.size(), 1u);
        const auto& report = desktop.credentialReports[0];
        EXPECT_EQ(report.relyingPartyIdentifier, deployment::relyingPartyIdentifier);
        EXPECT_EQ(report.credentialId, credential().credentialId);
        EXPECT_EQ(report.verdict, verdict);
        desktop.credentialReports.clear();
    }
};

class RegistrationReport : public RegistrationFixture {
protected:
    void expectReport(Verdict verdict) {
        ASSERT_EQ(desktop.credentialReports.size(), 1u);
        const auto& report = desktop.credentialReports[0];
        EXPECT_EQ(report.relyingPartyIdentifier, deployment::relyingPartyIdentifier);
        EXPECT_EQ(report.credentialId, credential().credentialId);
        EXPECT_EQ(report.verdict, verdict);
        desktop.credentialReports.clear();
    }
};

TEST_F(SignInReport, ANewSessionTokenMeansAccepted) {
    signInWith(200, "{}", {newToken});
    expectReport(Verdict::accepted);
}

TEST_F(SignInReport, ATokenThatReplacesAnEarlierOneMeansAccepted) {
    storeSessionCookie();
    signInWith(200, "{}", {newToken});
    expectReport(Verdict::accepted);
}

TEST_F(SignInReport, TheTokenOfAnEarlierSignInProvesNothing) {
    storeSessionCookie();
    signInWith(200, "{}", {{"csrf", "c", "localhost"}});
    EXPECT_TRUE(desktop.credentialReports.empty());
}

TEST_F(SignInReport, ARejectionMeansRefused) {
    signInWith(401, "{}");
    expectReport(Verdict::refused);
    signInWith(200, R"({"url":"https://host/login?error=x"})", {newToken});
    expectReport(Verdict::refused);
}

TEST_F(SignInReport, AReplyWithoutASessionMeansRefused) {
    signInWith(200, "<html>");
    expectReport(Verdict::refused);
}

TEST_F(SignInReport, WithoutAReplyOfTheServiceNothingIsSaid) {
    signInWith(std::nullopt, "{}");
    EXPECT_TRUE(desktop.credentialReports.empty());
    session.reply(200, R"({"challenge":"AAEC"})");
    session.reply(200, R"({"csrfToken":"token"})");
    session.fail(std::make_exception_ptr(Failure(FailureKind::timedOut, "No answer.")));
    startSignIn();
    confirm();
    EXPECT_TRUE(desktop.credentialReports.empty());
}

TEST_F(SignInReport, APasskeyThatTheServiceHasNotSeenIsNotReported) {
    session.reply(200, R"({"challenge":"AAEC"})");
    session.reply(200, "no token");
    startSignIn();
    confirm();
    session.reply(200, R"({"challenge":"AAEC"})");
    startSignIn();
    desktop.controllers.back()->complete({platform::OtherCredential{}});
    desktop.loop.runUntilIdle();
    EXPECT_FALSE(passkey->busy);
    EXPECT_TRUE(desktop.credentialReports.empty());
}

TEST_F(RegistrationReport, Status200MeansAccepted) {
    EXPECT_TRUE(registerWithVerify(200, "")->value);
    expectReport(Verdict::accepted);
}

TEST_F(RegistrationReport, AnyOtherStatusMeansRefused) {
    for (const int status : {201, 302, 400, 500}) {
        registerWithVerify(status, "{}");
        expectReport(Verdict::refused);
    }
}

TEST_F(RegistrationReport, ASuccessOfAnotherOriginIsNone) {
    startUpToSheet();
    session.replyFromElsewhere(200, "{}");
    confirm();
    expectReport(Verdict::refused);
}

TEST_F(RegistrationReport, WithoutAReplyOfTheServiceNothingIsSaid) {
    registerWithVerify(std::nullopt, "{}");
    startUpToSheet();
    session.fail(std::make_exception_ptr(Failure(FailureKind::timedOut, "No answer.")));
    confirm();
    EXPECT_FALSE(registrar->busy);
    EXPECT_TRUE(desktop.credentialReports.empty());
}

TEST_F(RegistrationReport, APasskeyThatWasNeverMadeIsNotReported) {
    startUpToSheet();
    desktop.controllers.back()->fail(std::make_exception_ptr(Failure(FailureKind::cancelled, "")));
    desktop.loop.runUntilIdle();
    EXPECT_FALSE(registrar->busy);
    EXPECT_TRUE(desktop.credentialReports.empty());
}

} // namespace
} // namespace kelo
