#include "CeremonyTest.h"

#include "base/Base64.h"

namespace kelo {

using authenticator::Ceremony;
using authenticator::VerificationOutcome;
using testing::ElementsAre;
using testing::IsEmpty;

class MakeCredentialTest : public CeremonyTest {};

TEST_F(MakeCredentialTest, MakesACredentialThatSomeoneElsesLibraryAccepts) {
    const auto ended = doRegister(registration());
    ASSERT_TRUE(ended->value);
    const auto verified = verifyRegistration(*ended->value, "localhost");
    ASSERT_TRUE(verified);
    EXPECT_EQ(verified->flags, 0x45);
    EXPECT_EQ(verified->counter, 0U);
    EXPECT_EQ(verified->aaguid, Bytes(16));
    EXPECT_EQ(verified->credentialId, ended->value->credentialId);
    EXPECT_EQ(verified->credentialId.size(), 32U);
}

TEST_F(MakeCredentialTest, AsksAndVerifiesBeforeItMakesAKeyAndClosesTheSheet) {
    doRegister(registration());
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "create", "closed"));
}

TEST_F(MakeCredentialTest, TellsThePersonWhoAsksAndForWhichAccount) {
    doRegister(registration("zoe"));
    ASSERT_EQ(scope.person.requests.size(), 1U);
    EXPECT_EQ(scope.person.requests[0].ceremony, Ceremony::registration);
    EXPECT_EQ(scope.person.requests[0].relyingPartyIdentifier, "localhost");
    EXPECT_THAT(scope.person.requests[0].accountNames, ElementsAre("zoe"));
}

TEST_F(MakeCredentialTest, WritesTheClientDataFromTheFixedTemplate) {
    const auto ended = doRegister(registration());
    EXPECT_EQ(textOf(ended->value->rawClientDataJson),
              "{\"type\":\"webauthn.create\",\"challenge\":\"" +
                  base64URLEncode(bytesOf("creation challenge")) +
                  "\",\"origin\":\"https://localhost:8443\",\"crossOrigin\":false}");
}

TEST_F(MakeCredentialTest, KeepsWhatTheServiceNeedsLater) {
    const auto ended = doRegister(registration("zoe", "user-1"));
    ASSERT_EQ(kept().size(), 1U);
    EXPECT_EQ(kept()[0].credentialId, ended->value->credentialId);
    EXPECT_EQ(kept()[0].userId, bytesOf("user-1"));
    EXPECT_EQ(kept()[0].accountName, "zoe");
    EXPECT_EQ(kept()[0].created, scope.clock.time);
}

TEST_F(MakeCredentialTest, RefusesAnotherRelyingPartyBeforeThePersonSeesAnything) {
    auto request = registration();
    request.relyingPartyIdentifier = "example.org";
    expectError(
        *doRegister(request), FailureKind::notAllowed,
        "Kelo does not serve passkeys for example.org. Use a web browser for that service.");
    EXPECT_THAT(scope.person.events, IsEmpty());
}

TEST_F(MakeCredentialTest, RefusesARelyingPartyThatOnlyResemblesTheAssociatedOne) {
    for (const char* other : {"Localhost", "localhost.", "sub.localhost", "", "localhos"}) {
        auto request = registration();
        request.relyingPartyIdentifier = other;
        EXPECT_TRUE(doRegister(request)->error) << other;
    }
    EXPECT_THAT(scope.person.events, IsEmpty());
}

TEST_F(MakeCredentialTest, AcceptsUserIdsOfOneToSixtyFourBytesOnly) {
    const std::string sentence = "The service sent an account that a passkey cannot be made for. "
                                 "Nothing was registered.";
    for (const std::size_t size : {0U, 65U}) {
        expectError(*doRegister(registration("zoe", std::string(size, 'u'))),
                    FailureKind::notAllowed, sentence);
    }
    EXPECT_THAT(scope.person.events, IsEmpty());
    EXPECT_TRUE(doRegister(registration("zoe", std::string(1, 'u')))->value);
    EXPECT_TRUE(doRegister(registration("zoe", std::string(64, 'u')))->value);
}

TEST_F(MakeCredentialTest, PresentsOverTheAnchorItWasGiven) {
    const auto anchor = std::make_shared<SomeWindow>();
    authenticator::MakeCredential operation(scope.parts, registration(), anchor);
    EXPECT_TRUE(scope.run(operation.run())->value);
    EXPECT_EQ(scope.person.anchor, anchor);
}

TEST_F(MakeCredentialTest, AnAccountThatWasNotOfferedIsNoAgreement) {
    scope.person.choice = 1;
    expectError(*doRegister(registration()), FailureKind::cancelled,
                "The passkey request was cancelled.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "closed"));
}

TEST_F(MakeCredentialTest, EndsAsCancelledWhenThePersonDeclines) {
    scope.person.choice = std::nullopt;
    expectError(*doRegister(registration()), FailureKind::cancelled,
                "The passkey request was cancelled.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "closed"));
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(MakeCredentialTest, EndsAsCancelledWhenThePersonCancelsTheVerification) {
    scope.verifier.outcome = VerificationOutcome::cancelled;
    expectError(*doRegister(registration()), FailureKind::cancelled,
                "The passkey request was cancelled.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "closed"));
}

TEST_F(MakeCredentialTest, MakesNoKeyForAPersonItCouldNotVerify) {
    scope.verifier.outcome = VerificationOutcome::failed;
    expectError(
        *doRegister(registration()), FailureKind::notAllowed,
        "Kelo could not verify that it is you, so the passkey was not used. Please try again.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "closed"));
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(MakeCredentialTest, WhereNothingCanVerifyThePersonNoPasskeyIsMade) {
    scope.verifier.outcome = VerificationOutcome::unavailable;
    expectError(*doRegister(registration()), FailureKind::notAllowed, nothingCanVerify);
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "closed"));
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(MakeCredentialTest, AVerificationThatDoesNotWorkMakesNoPasskey) {
    scope.verifier.outcome = VerificationOutcome::undecided;
    expectError(*doRegister(registration()), FailureKind::notAllowed, verificationDoesNotWork);
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(MakeCredentialTest, PassesTheKeyStoresReasonOnAndKeepsNothing) {
    scope.keys.failure = "No keyring is running.";
    expectError(*doRegister(registration()), FailureKind::storage, "No keyring is running.");
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_EQ(scope.person.events.back(), "closed");
}

TEST_F(MakeCredentialTest, PassesTheDisksReasonOn) {
    std::filesystem::create_directories(scope.folder.path() / "kelo" / "passkeys.sqlite");
    const auto ended = doRegister(registration());
    ASSERT_TRUE(ended->error);
    EXPECT_EQ(ended->error->kind(), FailureKind::storage);
    EXPECT_EQ(scope.person.events.back(), "closed");
}

TEST_F(MakeCredentialTest, CancelWhileTheKeyringWaitsEndsAtOnceAndKeepsNothing) {
    scope.keys.hangs = true;
    const auto ended = doRegister(registration());
    ASSERT_TRUE(ended->pending());
    scope.person.pressCancel();
    scope.loop.runUntilIdle();
    expectError(*ended, FailureKind::cancelled, "The passkey request was cancelled.");
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_EQ(scope.person.events.back(), "closed");
}

TEST_F(MakeCredentialTest, DroppedWhileTheSheetIsOpenItClosesTheSheet) {
    scope.person.leavesOpen = true;
    doRegister(registration());
    dropSpawnedTasks();
    EXPECT_EQ(scope.person.events.back(), "closed");
}

TEST_F(MakeCredentialTest, RegisteringTheSameUserAgainLeavesTheFormerPasskey) {
    const auto first = registered("zoe", "user-1");
    const auto second = registered("zoe the second", "user-1");
    ASSERT_EQ(kept().size(), 2U);
    EXPECT_EQ(kept()[0].credentialId, second.credentialId);
    EXPECT_EQ(kept()[0].accountName, "zoe the second");
    EXPECT_EQ(kept()[1].credentialId, first.credentialId);
}

TEST_F(MakeCredentialTest, AnotherUserGetsAnotherPasskeyWithItsOwnKey) {
    const auto one = verifyRegistration(registered("zoe", "user-1"), "localhost");
    const auto two = verifyRegistration(registered("max", "user-2"), "localhost");
    EXPECT_EQ(kept().size(), 2U);
    EXPECT_NE(one->publicKey, two->publicKey);
    EXPECT_NE(one->credentialId, two->credentialId);
}

} // namespace kelo
