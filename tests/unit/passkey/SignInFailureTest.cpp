#include "unit/passkey/SignInFixture.h"

namespace kelo {
namespace {

/// After any failure: not busy, no error text set by the driver, and ready for the next try.
struct SignInFailureTest : SignInFixture {
    std::exception_ptr platformFailure = std::make_exception_ptr(
        Failure(FailureKind::cannotConnect, "Could not connect to localhost: Connection refused."));

    void expectIdle() {
        EXPECT_FALSE(passkey->busy);
        EXPECT_EQ(passkey->errorMessage.get(), std::nullopt);
        storeSessionCookie();
        EXPECT_TRUE(signInWithCallback(200, "{}")->value);
    }
    template <typename T>
    void expectPlatformFailure(const fakes::FlowResult<T>& flow) {
        EXPECT_TRUE(flow.template errorAs<Failure>());
        EXPECT_EQ(flow.errorText(), "Could not connect to localhost: Connection refused.");
    }
};

TEST_F(SignInFailureTest, OptionsTransportFailurePassesThrough) {
    session.fail(platformFailure);
    expectPlatformFailure(*startSignIn());
    expectIdle();
}

TEST_F(SignInFailureTest, OptionsReplyOutsideHttpFailsOptions) {
    session.reply(std::nullopt, R"({"challenge":"AAEC"})");
    expectFailure(*startSignIn(), passkey::PasskeyError::optionsFailed());
    expectIdle();
}

TEST_F(SignInFailureTest, OptionsStatusOtherThan200FailsOptions) {
    for (const int status : {201, 204, 302, 401, 500}) {
        session.reply(status, R"({"challenge":"AAEC"})");
        expectFailure(*startSignIn(), passkey::PasskeyError::optionsFailed());
    }
    EXPECT_TRUE(desktop.controllers.empty());
    expectIdle();
}

TEST_F(SignInFailureTest, OptionsOfAnotherOriginFailOptions) {
    session.replyFromElsewhere(200, R"({"challenge":"AAEC"})");
    expectFailure(*startSignIn(), passkey::PasskeyError::optionsFailed());
    EXPECT_TRUE(desktop.controllers.empty());
    expectIdle();
}

TEST_F(SignInFailureTest, OptionsBodyThatIsNotJsonPassesTheParserErrorThrough) {
    const auto flow = startWithOptions("<html>");
    const auto* error = flow->errorAs<Failure>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind(), FailureKind::invalidJson);
    expectIdle();
}

TEST_F(SignInFailureTest, OptionsThatAreNestedTooDeeplyAreNotReadable) {
    constexpr std::size_t levels = 100000;
    const auto flow = startWithOptions(R"({"challenge":"AAEC","extra":)" +
                                       std::string(levels, '[') + std::string(levels, ']') + "}");
    const auto* error = flow->errorAs<Failure>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind(), FailureKind::invalidJson);
    EXPECT_TRUE(desktop.controllers.empty());
    expectIdle();
}

TEST_F(SignInFailureTest, OptionsArrayFailsOptions) {
    const auto flow = startWithOptions("[]");
    expectFailure(*flow, passkey::PasskeyError::optionsFailed());
    EXPECT_EQ(flow->errorText(), "Could not start passkey login.");
    expectIdle();
}

TEST_F(SignInFailureTest, FetchedOptionsAreAnObject) {
    session.reply(200, R"([{"challenge":"AAEC"}])");
    const auto flow = fakes::start(passkey->fetchAssertionOptions());
    desktop.loop.runUntilIdle();
    expectFailure(*flow, passkey::PasskeyError::optionsFailed());
}

TEST_F(SignInFailureTest, MissingOrUnreadableChallengeFailsOptions) {
    for (const char* options : {"{}", R"({"challenge":5})", R"({"challenge":"A A"})",
                                R"({"Challenge":"AAEC"})", R"({"challenge":null})"})
        expectFailure(*startWithOptions(options), passkey::PasskeyError::optionsFailed());
    EXPECT_TRUE(desktop.controllers.empty());
    expectIdle();
}

TEST_F(SignInFailureTest, CancelledSheetGivesThePlatformsOwnText) {
    const auto flow = startWithOptions(R"({"challenge":"AAEC"})");
    desktop.controllers.at(0)->fail(std::make_exception_ptr(
        Failure(FailureKind::cancelled, "The passkey request was cancelled.")));
    desktop.loop.runUntilIdle();
    ASSERT_TRUE(flow->errorAs<Failure>());
    EXPECT_EQ(flow->errorText(), "The passkey request was cancelled.");
    EXPECT_EQ(session.sent.size(), 1u);
    expectIdle();
}

TEST_F(SignInFailureTest, CredentialOfAnotherKindIsRejected) {
    const auto flow = startWithOptions(R"({"challenge":"AAEC"})");
    desktop.controllers.at(0)->complete({platform::PlatformRegistrationCredential{}});
    desktop.loop.runUntilIdle();
    expectFailure(*flow, passkey::PasskeyError::signInRejected());
    expectIdle();
}

TEST_F(SignInFailureTest, LateSecondOutcomeOfACeremonyDoesNothing) {
    const auto flow = startWithOptions(R"({"challenge":"AAEC"})");
    auto& controller = *desktop.controllers.at(0);
    controller.fail(platformFailure);
    controller.fail(platformFailure);
    controller.complete({credential()});
    desktop.loop.runUntilIdle();
    expectPlatformFailure(*flow);
    expectIdle();
}

TEST_F(SignInFailureTest, SecondStartLeavesTheFirstSuspended) {
    const auto first = startWithOptions(R"({"challenge":"AAEC"})");
    const auto second = startWithOptions(R"({"challenge":"AAEC"})");
    desktop.controllers.at(0)->fail(platformFailure);
    desktop.loop.runUntilIdle();
    // One field, one pending flow: whichever callback comes first ends the latest.
    EXPECT_FALSE(first->ended());
    EXPECT_TRUE(second->ended());
}

TEST_F(SignInFailureTest, CsrfTransportFailurePassesThrough) {
    session.reply(200, R"({"challenge":"AAEC"})");
    session.fail(platformFailure);
    const auto flow = startSignIn();
    confirm();
    expectPlatformFailure(*flow);
    expectIdle();
}

TEST_F(SignInFailureTest, CsrfReplyWithoutAStringTokenIsABadResponse) {
    for (const char* body :
         {"<html>", "", "[]", "{}", R"({"csrfToken":5})", R"({"csrftoken":"x"})"}) {
        session.reply(200, R"({"challenge":"AAEC"})");
        session.reply(200, body);
        const auto flow = startSignIn();
        confirm();
        expectFailure(*flow, passkey::PasskeyError::badResponse("No CSRF token"));
        EXPECT_EQ(flow->errorText(), "No CSRF token");
    }
    expectIdle();
}

TEST_F(SignInFailureTest, CsrfStatusIsNotLookedAtAndAnEmptyTokenIsOne) {
    session.reply(200, R"({"challenge":"AAEC"})");
    session.reply(500, R"({"csrfToken":""})");
    session.reply(200, "{}");
    storeSessionCookie();
    const auto flow = startSignIn();
    confirm();
    EXPECT_TRUE(flow->value);
    EXPECT_TRUE(textOf(*session.sent[2].request.body).starts_with("csrfToken=&"));
}

TEST_F(SignInFailureTest, CallbackTransportFailurePassesThrough) {
    session.reply(200, R"({"challenge":"AAEC"})");
    session.reply(200, R"({"csrfToken":"token"})");
    session.fail(platformFailure);
    const auto flow = startSignIn();
    confirm();
    expectPlatformFailure(*flow);
    expectIdle();
}

TEST_F(SignInFailureTest, CallbackReplyOutsideHttpIsABadResponse) {
    expectFailure(*signInWithCallback(std::nullopt, "{}"),
                  passkey::PasskeyError::badResponse("No response"));
    expectIdle();
}

TEST_F(SignInFailureTest, CallbackStatus400IsARejection) {
    expectFailure(*signInWithCallback(400, "{}"), passkey::PasskeyError::signInRejected());
    expectIdle();
}

TEST_F(SignInFailureTest, CallbackAddressWithErrorIsARejection) {
    expectFailure(*signInWithCallback(200, R"({"url":"https://host/login?error=x"})"),
                  passkey::PasskeyError::signInRejected());
    expectIdle();
}

TEST_F(SignInFailureTest, NoSessionCookieIsItsOwnFailure) {
    session.storedCookies = {{"csrf", "session-token", "localhost"},
                             {"Session-Token", "x", "localhost"}};
    const auto flow = signInWithCallback(200, "{}");
    expectFailure(*flow, passkey::PasskeyError::noSessionCookie());
    EXPECT_EQ(flow->errorText(), "Signed in but no session was returned.");
    expectIdle();
}

TEST_F(SignInFailureTest, StoreThatAnswersNothingOrIsMissingHasNoSessionCookie) {
    session.storedCookies = std::nullopt;
    expectFailure(*signInWithCallback(200, "{}"), passkey::PasskeyError::noSessionCookie());
    session.hasStorage = false;
    expectFailure(*signInWithCallback(200, "{}"), passkey::PasskeyError::noSessionCookie());
}

TEST_F(SignInFailureTest, NothingIsRetriedOrLogged) {
    session.fail(platformFailure);
    startSignIn();
    EXPECT_EQ(session.sent.size(), 1u);
    EXPECT_TRUE(desktop.fileSystem().calls.empty());
}

} // namespace
} // namespace kelo
