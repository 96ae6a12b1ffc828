#include "unit/passkey/SignInFixture.h"

namespace kelo {
namespace {

struct PasskeyAuthenticatorTest : SignInFixture {};

TEST_F(PasskeyAuthenticatorTest, IsIdleAtFirstWithASessionOfItsOwn) {
    EXPECT_FALSE(passkey->busy);
    EXPECT_EQ(passkey->errorMessage.get(), std::nullopt);
    EXPECT_EQ(desktop.ephemeralSessions.size(), 1u);
    EXPECT_TRUE(session.sent.empty());
}

TEST_F(PasskeyAuthenticatorTest, RequestsGoOutInOrderAndToTheByte) {
    storeSessionCookie();
    const auto flow = signInWithCallback(200, R"({"url":"https://localhost:8443"})");
    ASSERT_TRUE(flow->value) << flow->errorText();
    ASSERT_EQ(session.sent.size(), 3u);

    const auto& options = session.sent[0].request;
    EXPECT_EQ(options.method, "POST");
    EXPECT_EQ(options.url.absoluteString(), at("api/account/passkey/auth/options"));
    EXPECT_EQ(options.headers, Headers());
    EXPECT_FALSE(options.body);
    EXPECT_EQ(options.timeout, std::chrono::seconds(60));
    EXPECT_FALSE(session.sent[0].byUrl);

    EXPECT_TRUE(session.sent[1].byUrl);
    EXPECT_EQ(session.sent[1].request.url.absoluteString(), at("api/auth/csrf"));

    const auto& callback = session.sent[2].request;
    EXPECT_EQ(callback.method, "POST");
    EXPECT_EQ(callback.url.absoluteString(), at("api/auth/callback/credentials"));
    EXPECT_EQ(callback.headers, (Headers{{"Content-Type", "application/x-www-form-urlencoded"},
                                         {"X-Auth-Return-Redirect", "true"}}));
    EXPECT_EQ(callback.timeout, std::chrono::seconds(60));
    EXPECT_EQ(textOf(callback.body.value()),
              "csrfToken=token&passkeyAssertion="
              "%7B%22authenticatorAttachment%22:%22platform%22,%22clientExtensionResults%22:%7B%7D,"
              "%22id%22:%22AQID%22,%22rawId%22:%22AQID%22,%22response%22:%7B"
              "%22authenticatorData%22:%22BAU%22,%22clientDataJSON%22:%22e30%22,"
              "%22signature%22:%22-_8%22,%22userHandle%22:%22Bw%22%7D,"
              "%22type%22:%22public-key%22%7D"
              "&callbackUrl=" +
                  std::string(deployment::serviceOrigin) + "&json=true");
}

TEST_F(PasskeyAuthenticatorTest, AssertionJsonHasExactlyItsMembers) {
    const auto json = passkey::PasskeyAuthenticator::assertionJSON(credential());
    EXPECT_EQ(json, nlohmann::json::parse(R"({
        "id": "AQID", "rawId": "AQID", "type": "public-key",
        "authenticatorAttachment": "platform", "clientExtensionResults": {},
        "response": {"clientDataJSON": "e30", "authenticatorData": "BAU",
                     "signature": "-_8", "userHandle": "Bw"}})"));
}

TEST_F(PasskeyAuthenticatorTest, CredentialWithoutARequiredPartStopsTheProcess) {
    for (auto part : {&platform::PlatformAssertionCredential::rawAuthenticatorData,
                      &platform::PlatformAssertionCredential::signature,
                      &platform::PlatformAssertionCredential::userId}) {
        auto incomplete = credential();
        incomplete.*part = std::nullopt;
        EXPECT_DEATH(passkey::PasskeyAuthenticator::assertionJSON(incomplete), "an assertion has");
    }
}

TEST_F(PasskeyAuthenticatorTest, BusyIsTrueUntilTheFlowEnds) {
    const auto flow = startWithOptions(R"({"challenge":"AAEC"})");
    EXPECT_TRUE(passkey->busy);
    EXPECT_FALSE(flow->ended());
    session.reply(200, R"({"csrfToken":"token"})");
    session.reply(200, "{}");
    storeSessionCookie();
    confirm();
    EXPECT_TRUE(flow->value);
    EXPECT_FALSE(passkey->busy);
}

TEST_F(PasskeyAuthenticatorTest, StartSetsBusyThenClearsTheErrorAndEndsNotBusyOnce) {
    passkey->errorMessage = "old";
    std::vector<std::string> changes;
    const auto observation = passkey->observe([&] {
        changes.push_back(std::string(passkey->busy ? "busy" : "idle") +
                          (passkey->errorMessage.get() ? " with error" : ""));
    });
    startWithOptions("[]");
    // What stood before each change: the start's two, and the end's one.
    EXPECT_EQ(changes, (std::vector<std::string>{"idle with error", "busy with error", "busy"}));
    EXPECT_FALSE(passkey->busy);
    EXPECT_EQ(passkey->errorMessage.get(), std::nullopt);
}

TEST_F(PasskeyAuthenticatorTest, RelyingPartyIsOursWhateverTheServiceNames) {
    startWithOptions(R"({"challenge":"AAEC","rpId":"evil.example","timeout":1,"extensions":{}})");
    EXPECT_EQ(assertionRequest().relyingPartyIdentifier, deployment::relyingPartyIdentifier);
    EXPECT_EQ(assertionRequest().challenge, (Bytes{0, 1, 2}));
    EXPECT_FALSE(assertionRequest().allowedCredentials);
    EXPECT_FALSE(assertionRequest().userVerificationPreference);
    EXPECT_TRUE(desktop.controllers.at(0)->performed);
}

TEST_F(PasskeyAuthenticatorTest, ChallengeInStandardBase64IsAccepted) {
    startWithOptions(R"({"challenge":"+/8="})");
    EXPECT_EQ(assertionRequest().challenge, (Bytes{0xFB, 0xFF}));
}

TEST_F(PasskeyAuthenticatorTest, EmptyChallengeReachesThePlatform) {
    startWithOptions(R"({"challenge":""})");
    EXPECT_EQ(assertionRequest().challenge, Bytes{});
}

TEST_F(PasskeyAuthenticatorTest, SecondOutcomeAfterASuccessDoesNothing) {
    const auto flow = startWithOptions(R"({"challenge":"AAEC"})");
    session.reply(200, R"({"csrfToken":"token"})");
    session.reply(200, "{}");
    storeSessionCookie();
    auto& controller = *desktop.controllers.at(0);
    controller.complete({credential()});
    controller.complete({credential()});
    controller.fail(std::make_exception_ptr(passkey::PasskeyError::signInRejected()));
    desktop.loop.runUntilIdle();
    EXPECT_TRUE(flow->value) << flow->errorText();
    EXPECT_EQ(session.sent.size(), 3u);
}

TEST_F(PasskeyAuthenticatorTest, AllowedCredentialsKeepTheirOrderAndSkipWhatCannotBeRead) {
    startWithOptions(R"({"challenge":"AAEC","allowCredentials":[
        {"id":"AQ","type":"nonsense"},{"id":5},{"type":"public-key"},{"id":"*"},{"id":"Ag"}]})");
    const auto& allowed = assertionRequest().allowedCredentials.value();
    ASSERT_EQ(allowed.size(), 2u);
    EXPECT_EQ(allowed[0].credentialId, Bytes{1});
    EXPECT_EQ(allowed[1].credentialId, Bytes{2});
}

TEST_F(PasskeyAuthenticatorTest, OneUnreadableCredentialGivesAnEmptyAllowedList) {
    startWithOptions(R"({"challenge":"AAEC","allowCredentials":[{"id":"*"}]})");
    ASSERT_TRUE(assertionRequest().allowedCredentials);
    EXPECT_TRUE(assertionRequest().allowedCredentials->empty());
}

TEST_F(PasskeyAuthenticatorTest, AllowedCredentialsOfAnotherShapeAreIgnoredAltogether) {
    for (const char* shape :
         {"[]", "{}", R"({"a":{"id":"AQ"}})", "\"AQ\"", "null", R"([{"id":"AQ"},"AQ"])"}) {
        desktop.controllers.clear();
        startWithOptions(std::string(R"({"challenge":"AAEC","allowCredentials":)") + shape + "}");
        EXPECT_FALSE(assertionRequest().allowedCredentials) << shape;
    }
}

TEST_F(PasskeyAuthenticatorTest, UserVerificationTextIsPassedThroughUnchanged) {
    startWithOptions(R"({"challenge":"AAEC","userVerification":"whatever it says"})");
    EXPECT_EQ(assertionRequest().userVerificationPreference, "whatever it says");
}

TEST_F(PasskeyAuthenticatorTest, NumericUserVerificationIsIgnored) {
    startWithOptions(R"({"challenge":"AAEC","userVerification":1})");
    EXPECT_FALSE(assertionRequest().userVerificationPreference);
}

TEST_F(PasskeyAuthenticatorTest, ControllerHoldsTheDriverWeakly) {
    startWithOptions(R"({"challenge":"AAEC"})");
    const auto controller = desktop.controllers.at(0);
    EXPECT_EQ(controller->delegate.lock(), passkey);
    EXPECT_EQ(controller->provider.lock(), passkey);
    dropSpawnedTasks();
    passkey.reset();
    EXPECT_TRUE(controller->delegate.expired());
    EXPECT_TRUE(controller->provider.expired());
}

TEST_F(PasskeyAuthenticatorTest, RefusedCallbackStatusStartsAt400) {
    storeSessionCookie();
    EXPECT_TRUE(signInWithCallback(200, "")->value);
    EXPECT_TRUE(signInWithCallback(201, "")->value);
    EXPECT_TRUE(signInWithCallback(302, "")->value);
    EXPECT_TRUE(signInWithCallback(399, "")->value);
    expectFailure(*signInWithCallback(400, ""), passkey::PasskeyError::signInRejected());
    expectFailure(*signInWithCallback(500, ""), passkey::PasskeyError::signInRejected());
}

TEST_F(PasskeyAuthenticatorTest, CallbackBodiesWithoutAnErrorAddressCountAsSuccess) {
    storeSessionCookie();
    for (const char* body : {"", "<html>", "[]", "{}", R"({"url":5})", R"({"url":"https://host/"})",
                             R"({"url":"https://host/ERROR"})", R"({"URL":"error"})"})
        EXPECT_TRUE(signInWithCallback(200, body)->value) << body;
}

TEST_F(PasskeyAuthenticatorTest, CallbackAddressWithErrorAnywhereIsARefusal) {
    storeSessionCookie();
    for (const char* body : {R"({"url":"https://host/login?error=Credentials"})",
                             R"({"url":"https://host/error"})", R"({"url":"terrors"})"})
        expectFailure(*signInWithCallback(200, body), passkey::PasskeyError::signInRejected());
}

TEST_F(PasskeyAuthenticatorTest, RedirectThatSetsAPrefixedSessionCookieSignsIn) {
    const platform::HttpCookie csrf{"__Host-any.csrf-token", "c", "localhost"};
    const platform::HttpCookie token{"__Secure-any.session-token", "x", "localhost"};
    session.reply(200, R"({"challenge":"AAEC"})");
    session.reply(200, R"({"csrfToken":"token"})", {csrf});
    session.reply(302, "", {token});
    const auto flow = startSignIn();
    EXPECT_TRUE(session.storedCookies->empty());
    confirm();
    ASSERT_TRUE(flow->value) << flow->errorText();
    EXPECT_EQ(*flow->value, (std::vector<platform::HttpCookie>{csrf, token}));
}

TEST_F(PasskeyAuthenticatorTest, SessionTokenMayStandAnywhereInTheCookiesName) {
    for (const char* name : {"session-token", "__Host-any.session-token.0", "xsession-tokenx"}) {
        session.storedCookies = {{name, "x", "localhost"}};
        EXPECT_TRUE(signInWithCallback(200, "")->value) << name;
    }
}

TEST_F(PasskeyAuthenticatorTest, ReturnedListHoldsEveryCookieOfTheBaseUrl) {
    session.storedCookies = {{"csrf", "c", "localhost"},
                             {"kelo.session-token", "x", "localhost"},
                             {"other", "o", "localhost"}};
    const auto flow = signInWithCallback(200, "{}");
    ASSERT_TRUE(flow->value);
    EXPECT_EQ(*flow->value, *session.storedCookies);
    for (const std::string& url : session.askedCookiesFor)
        EXPECT_EQ(url, deployment::serviceOrigin);
}

TEST_F(PasskeyAuthenticatorTest, LaterSignInUsesTheSameSession) {
    storeSessionCookie();
    signInWithCallback(200, "{}");
    EXPECT_TRUE(signInWithCallback(200, "{}")->value);
    EXPECT_EQ(desktop.ephemeralSessions.size(), 1u);
    EXPECT_EQ(session.sent.size(), 6u);
}

TEST_F(PasskeyAuthenticatorTest, AnchorIsTheKeyWindowThenTheFirstThenAPlainOne) {
    auto& application = desktop.application();
    const auto first = std::make_shared<fakes::FakeApplication::FakeWindow>();
    const auto second = std::make_shared<fakes::FakeApplication::FakeWindow>();
    startWithOptions(R"({"challenge":"AAEC"})");
    auto& controller = *desktop.controllers.at(0);

    EXPECT_NE(passkey->presentationAnchor(controller), nullptr);
    EXPECT_EQ(application.calls, std::vector<std::string>{"make plain window"});
    application.open = {first, second};
    EXPECT_EQ(passkey->presentationAnchor(controller), first);
    application.key = second;
    EXPECT_EQ(passkey->presentationAnchor(controller), second);
}

} // namespace
} // namespace kelo
