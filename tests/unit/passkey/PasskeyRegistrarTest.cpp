#include "unit/passkey/RegistrationFixture.h"

namespace kelo {
namespace {

struct PasskeyRegistrarTest : RegistrationFixture {};

TEST_F(PasskeyRegistrarTest, IsIdleAtFirstWithoutAMessage) {
    EXPECT_FALSE(registrar->busy);
    EXPECT_EQ(registrar->message.get(), std::nullopt);
    EXPECT_TRUE(session.sent.empty());
}

TEST_F(PasskeyRegistrarTest, EmptyCookieListAsksToLogInAndSendsNothing) {
    const auto flow = start({});
    expectFailure(*flow, "Log in first, then register a passkey.");
    EXPECT_TRUE(session.sent.empty());
}

TEST_F(PasskeyRegistrarTest, CookiesWithoutASessionTokenAskToLogInAndSendNothing) {
    const auto flow = start({{"csrf", "1", "localhost"}, {"Session-Token", "2", "localhost"}});
    expectFailure(*flow, "Log in first, then register a passkey.");
    EXPECT_TRUE(session.sent.empty());
}

TEST_F(PasskeyRegistrarTest, CookiesAreJoinedInTheirOrderWithSemicolonAndBlank) {
    session.reply(500, "");
    start({{"a", "1", "localhost"}, {"session-token", "xyz", "localhost"}});
    EXPECT_EQ(session.sent.at(0).request.headers, (Headers{{"Cookie", "a=1; session-token=xyz"}}));
}

TEST_F(PasskeyRegistrarTest, NoCookieIsFilteredOrEscapedOrDeduplicated) {
    session.reply(500, "");
    start({{"a", "\"1 é", "other.example"}, {"a", "2", ".localhost"}, {"session-token", "", "x"}});
    EXPECT_EQ(session.sent.at(0).request.headers,
              (Headers{{"Cookie", "a=\"1 é; a=2; session-token="}}));
}

TEST_F(PasskeyRegistrarTest, SessionTokenInsideAValuePassesTheCheck) {
    session.reply(500, "");
    start({{"a", "my-session-token-1", "localhost"}});
    EXPECT_EQ(session.sent.size(), 1u);
}

TEST_F(PasskeyRegistrarTest, RequestsGoOutInOrderAndToTheByte) {
    const auto flow = startUpToSheet();
    session.reply(200, "{}");
    confirm();
    ASSERT_TRUE(flow->value) << flow->errorText();
    ASSERT_EQ(session.sent.size(), 3u);

    const auto& csrf = session.sent[0].request;
    EXPECT_EQ(csrf.method, "GET");
    EXPECT_EQ(csrf.url.absoluteString(), at("api/csrf"));
    EXPECT_EQ(csrf.headers, (Headers{{"Cookie", cookieHeader}}));
    EXPECT_FALSE(csrf.body);
    EXPECT_EQ(csrf.timeout, std::chrono::seconds(60));

    const auto& options = session.sent[1].request;
    EXPECT_EQ(options.method, "POST");
    EXPECT_EQ(options.url.absoluteString(), at("api/account/passkey/register/options"));
    EXPECT_EQ(options.headers, (Headers{{"Cookie", cookieHeader}, {"x-csrf-token", "csrf"}}));
    EXPECT_FALSE(options.body);
    EXPECT_EQ(options.timeout, std::chrono::seconds(60));

    const auto& verify = session.sent[2].request;
    EXPECT_EQ(verify.method, "POST");
    EXPECT_EQ(verify.url.absoluteString(), at("api/account/passkey/register/verify"));
    EXPECT_EQ(verify.headers, (Headers{{"Cookie", cookieHeader},
                                       {"x-csrf-token", "csrf"},
                                       {"Content-Type", "application/json"}}));
    EXPECT_EQ(verify.timeout, std::chrono::seconds(60));
    EXPECT_EQ(nlohmann::json::parse(textOf(verify.body.value())), nlohmann::json::parse(R"json({
        "label": "Mac (Kelo)", "password": "my code", "mfaCode": "my code",
        "response": {
            "id": "AQID", "rawId": "AQID", "type": "public-key",
            "authenticatorAttachment": "platform", "clientExtensionResults": {},
            "response": {"clientDataJSON": "e30", "attestationObject": "-_8",
                         "transports": ["internal"]}}})json"));
    EXPECT_EQ(*verify.body->begin(), '{');
    EXPECT_EQ(textOf(*verify.body).find(' '), textOf(*verify.body).find(" (Kelo)"));
}

TEST_F(PasskeyRegistrarTest, EntryIsSentAsItIsUnderBothNames) {
    const std::string entry = "\"}, \\ \n é 😀";
    startUpToSheet(entry);
    confirm();
    const auto body = nlohmann::json::parse(textOf(session.sent.at(2).request.body.value()));
    EXPECT_EQ(body.size(), 4U);
    EXPECT_EQ(body["password"], entry);
    EXPECT_EQ(body["mfaCode"], entry);
}

TEST_F(PasskeyRegistrarTest, SuccessLeavesItsMessageAndTheNextStartClearsIt) {
    const auto flow = startUpToSheet();
    EXPECT_TRUE(registrar->busy);
    session.reply(200, "not looked at");
    confirm();
    EXPECT_TRUE(flow->value);
    EXPECT_EQ(registrar->message.get(), "Passkey registered on this Mac.");
    EXPECT_FALSE(registrar->busy);

    session.holdNext();
    start(signedIn);
    EXPECT_TRUE(registrar->busy);
    EXPECT_EQ(registrar->message.get(), std::nullopt);
}

TEST_F(PasskeyRegistrarTest, StartSetsBusyThenClearsTheMessageAndSuccessSetsItThenEndsBusy) {
    registrar->message = "old";
    // What stood before each change.
    std::vector<std::string> changes;
    const auto observation = registrar->observe([&] {
        changes.push_back((registrar->busy ? "busy, " : "idle, ") +
                          registrar->message.get().value_or("no message"));
    });
    const auto flow = registerWithVerify(200, "{}");
    ASSERT_TRUE(flow->value) << flow->errorText();
    EXPECT_EQ(changes, (std::vector<std::string>{"idle, old", "busy, old", "busy, no message",
                                                 "busy, Passkey registered on this Mac."}));
}

TEST_F(PasskeyRegistrarTest, FailureEndsBusyOnceAndLeavesNoMessage) {
    registrar->message = "old";
    std::vector<std::string> changes;
    const auto observation = registrar->observe([&] {
        changes.push_back((registrar->busy ? "busy, " : "idle, ") +
                          registrar->message.get().value_or("no message"));
    });
    start({});
    EXPECT_EQ(changes, (std::vector<std::string>{"idle, old", "busy, old", "busy, no message"}));
    EXPECT_FALSE(registrar->busy);
}

TEST_F(PasskeyRegistrarTest, EmptyCsrfTokenIsSentAsAnEmptyHeader) {
    session.reply(200, R"({"token":""})");
    session.reply(500, "");
    start(signedIn);
    EXPECT_EQ(session.sent.at(1).request.headers,
              (Headers{{"Cookie", cookieHeader}, {"x-csrf-token", ""}}));
}

TEST_F(PasskeyRegistrarTest, CsrfShortfallsSayNotSignedIn) {
    const std::pair<std::optional<int>, const char*> replies[] = {
        {201, R"({"token":"x"})"},
        {401, R"({"token":"x"})"},
        {std::nullopt, R"({"token":"x"})"},
        {200, "<html>"},
        {200, "[]"},
        {200, "{}"},
        {200, R"({"token":5})"},
    };
    for (const auto& [status, body] : replies) {
        session.reply(status, body);
        expectFailure(*start(signedIn), "Not signed in (could not get CSRF token).");
    }
}

TEST_F(PasskeyRegistrarTest, OptionsShortfallsSayCouldNotStart) {
    const std::pair<std::optional<int>, const char*> replies[] = {
        {201, "{}"}, {403, "{}"}, {std::nullopt, "{}"}, {200, "[]"}};
    for (const auto& [status, body] : replies) {
        session.reply(200, R"({"token":"csrf"})");
        session.reply(status, body);
        expectFailure(*start(signedIn), "Could not start passkey registration.");
    }
}

TEST_F(PasskeyRegistrarTest, OptionsBodyThatIsNotJsonPassesTheParserErrorThrough) {
    session.reply(200, R"({"token":"csrf"})");
    session.reply(200, "<html>");
    const auto flow = start(signedIn);
    ASSERT_TRUE(flow->errorAs<Failure>());
    EXPECT_FALSE(registrar->busy);
}

TEST_F(PasskeyRegistrarTest, OptionsThatAreNestedTooDeeplyAreNotReadable) {
    constexpr std::size_t levels = 100000;
    const auto flow = startWithOptions(R"({"challenge":"AAEC","user":{"id":"AQ"},"extra":)" +
                                       std::string(levels, '[') + std::string(levels, ']') + "}");
    const auto* error = flow->errorAs<Failure>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind(), FailureKind::invalidJson);
    EXPECT_TRUE(desktop.controllers.empty());
}

TEST_F(PasskeyRegistrarTest, MissingOrUnreadableOptionsAreBad) {
    for (const char* options :
         {"{}", R"({"challenge":"AAEC"})", R"({"user":{"id":"AQ"}})",
          R"({"challenge":"* *","user":{"id":"AQ"}})", R"({"challenge":"AAEC","user":"AQ"})",
          R"({"challenge":"AAEC","user":{"id":1}})", R"({"challenge":"AAEC","user":{"id":"*"}})"})
        expectFailure(*startWithOptions(options), "Bad registration options.");
    EXPECT_TRUE(desktop.controllers.empty());
}

TEST_F(PasskeyRegistrarTest, EmptyChallengeAndUserIdReachThePlatform) {
    startWithOptions(R"({"challenge":"","user":{"id":""}})");
    EXPECT_EQ(registrationRequest().challenge, Bytes{});
    EXPECT_EQ(registrationRequest().userId, Bytes{});
}

TEST_F(PasskeyRegistrarTest, AccountNameIsNameThenDisplayNameThenKelo) {
    const std::pair<const char*, const char*> users[] = {
        {R"({"id":"AQ","name":"ada","displayName":"Ada"})", "ada"},
        {R"({"id":"AQ","displayName":"Ada"})", "Ada"},
        {R"({"id":"AQ","name":5,"displayName":"Ada"})", "Ada"},
        {R"({"id":"AQ"})", "Kelo"},
        {R"({"id":"AQ","name":null,"displayName":5})", "Kelo"},
        {R"({"id":"AQ","name":""})", ""},
    };
    for (const auto& [user, name] : users) {
        desktop.controllers.clear();
        startWithOptions(std::string(R"({"challenge":"AAEC","user":)") + user + "}");
        EXPECT_EQ(registrationRequest().name, name);
    }
}

TEST_F(PasskeyRegistrarTest, OnlyChallengeNameAndUserIdComeFromTheService) {
    startWithOptions(R"({"challenge":"AAEC","user":{"id":"-_8"},"rp":{"id":"evil.example"},
        "pubKeyCredParams":[],"excludeCredentials":[{"id":"AQ"}],"attestation":"direct"})");
    EXPECT_EQ(registrationRequest().relyingPartyIdentifier, deployment::relyingPartyIdentifier);
    EXPECT_EQ(registrationRequest().challenge, (Bytes{0, 1, 2}));
    EXPECT_EQ(registrationRequest().userId, (Bytes{0xFB, 0xFF}));
}

TEST_F(PasskeyRegistrarTest, ControllerPresentsOverTheRegistrarsWindow) {
    startUpToSheet();
    EXPECT_EQ(desktop.controllers.at(0)->delegate.lock(), registrar);
    EXPECT_EQ(desktop.controllers.at(0)->provider.lock(), registrar);
}

TEST_F(PasskeyRegistrarTest, CancelledSheetGivesThePlatformsOwnText) {
    const auto flow = startUpToSheet();
    desktop.controllers.at(0)->fail(std::make_exception_ptr(
        Failure(FailureKind::cancelled, "The passkey request was cancelled.")));
    desktop.loop.runUntilIdle();
    EXPECT_TRUE(flow->errorAs<Failure>());
    EXPECT_EQ(flow->errorText(), "The passkey request was cancelled.");
    EXPECT_FALSE(registrar->busy);
    EXPECT_EQ(session.sent.size(), 2u);
}

TEST_F(PasskeyRegistrarTest, CredentialOfAnotherKindIsRejected) {
    const auto flow = startUpToSheet();
    desktop.controllers.at(0)->complete({platform::PlatformAssertionCredential{}});
    desktop.loop.runUntilIdle();
    const auto* error = flow->errorAs<passkey::PasskeyError>();
    ASSERT_TRUE(error);
    EXPECT_EQ(*error, passkey::PasskeyError::signInRejected());
}

TEST_F(PasskeyRegistrarTest, SecondOutcomeAfterASuccessDoesNothing) {
    const auto flow = startUpToSheet();
    session.reply(200, "{}");
    auto& controller = *desktop.controllers.at(0);
    controller.complete({credential()});
    controller.complete({credential()});
    controller.fail(std::make_exception_ptr(passkey::PasskeyError::signInRejected()));
    desktop.loop.runUntilIdle();
    EXPECT_TRUE(flow->value) << flow->errorText();
    EXPECT_EQ(session.sent.size(), 3u);
}

TEST_F(PasskeyRegistrarTest, MissingAttestationObjectIsNamed) {
    const auto flow = startUpToSheet();
    auto incomplete = credential();
    incomplete.rawAttestationObject = std::nullopt;
    confirm(incomplete);
    expectFailure(*flow, "No attestation object from authenticator.");
    EXPECT_EQ(session.sent.size(), 2u);
}

TEST_F(PasskeyRegistrarTest, BodyThatCannotBeWrittenPassesTheWritersErrorThrough) {
    const auto flow = startUpToSheet("bad \xFF");
    confirm();
    const auto* error = flow->errorAs<Failure>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind(), FailureKind::invalidJson);
    EXPECT_EQ(session.sent.size(), 2u);
    EXPECT_FALSE(registrar->busy);
}

TEST_F(PasskeyRegistrarTest, RefusedVerificationGivesTheServicesReason) {
    expectFailure(*registerWithVerify(400, R"({"reason":"Invalid code"})"),
                  "Registration failed: Invalid code.");
}

TEST_F(PasskeyRegistrarTest, RefusedVerificationWithoutAReasonSaysServerRejected) {
    const std::pair<std::optional<int>, const char*> replies[] = {
        {500, "<html>"}, {400, "{}"},          {400, R"({"reason":5})"},
        {400, "[]"},     {std::nullopt, "{}"}, {302, ""},
    };
    for (const auto& [status, body] : replies)
        expectFailure(*registerWithVerify(status, body), "Registration failed: server rejected.");
}

TEST_F(PasskeyRegistrarTest, Only200IsASuccess) {
    expectFailure(*registerWithVerify(201, R"({"reason":"Created"})"),
                  "Registration failed: Created.");
    EXPECT_EQ(registrar->message.get(), std::nullopt);
}

TEST_F(PasskeyRegistrarTest, OptionsOfAnotherOriginMakeNoPasskey) {
    session.reply(200, R"({"token":"csrf"})");
    session.replyFromElsewhere(200, usualOptions);
    expectFailure(*start(signedIn), "Could not start passkey registration.");
    EXPECT_TRUE(desktop.controllers.empty());
}

TEST_F(PasskeyRegistrarTest, VerificationByAnotherOriginIsNoSuccessAndItsWordsAreNotShown) {
    for (const int status : {200, 400}) {
        const auto flow = startUpToSheet();
        session.replyFromElsewhere(status, R"({"reason":"Call this number"})");
        confirm();
        expectFailure(*flow, "Registration failed: server rejected.");
    }
}

TEST_F(PasskeyRegistrarTest, TransportFailureOfAnyRequestPassesThrough) {
    const auto failure =
        std::make_exception_ptr(Failure(FailureKind::timedOut, "localhost did not answer."));
    for (int answered = 0; answered < 3; ++answered) {
        desktop.controllers.clear();
        if (answered > 0)
            session.reply(200, R"({"token":"csrf"})");
        if (answered > 1)
            session.reply(200, usualOptions);
        session.fail(failure);
        const auto flow = start(signedIn);
        if (answered > 1)
            confirm();
        EXPECT_TRUE(flow->errorAs<Failure>()) << answered;
        EXPECT_EQ(flow->errorText(), "localhost did not answer.");
        EXPECT_FALSE(registrar->busy);
    }
}

TEST_F(PasskeyRegistrarTest, UsesTheSharedSessionAndNoneOfItsOwn) {
    session.reply(500, "");
    start(signedIn);
    EXPECT_TRUE(desktop.ephemeralSessions.empty());
    EXPECT_EQ(session.sent.size(), 1u);
}

} // namespace
} // namespace kelo
