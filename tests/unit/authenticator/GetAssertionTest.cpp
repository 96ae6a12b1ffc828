#include "CeremonyTest.h"
#include "Hex.h"

#include "base/Base64.h"

namespace kelo {

using authenticator::Ceremony;
using authenticator::VerificationOutcome;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const noPasskey =
    "There is no passkey for localhost on this computer. Sign in another way, "
    "then register one from the Account menu.";

platform::PlatformPublicKeyCredentialDescriptor
descriptor(const platform::PlatformRegistrationCredential& credential) {
    return {credential.credentialId};
}

} // namespace

class GetAssertionTest : public CeremonyTest {
protected:
    const std::vector<std::optional<std::string>> everyPreference = {
        std::nullopt, "required", "preferred", "discouraged", "", "Required", "something new"};

    std::uint8_t flagsFor(std::optional<std::string> preference) {
        auto request = assertion();
        request.userVerificationPreference = std::move(preference);
        const auto ended = signIn(request);
        EXPECT_TRUE(ended->value);
        return ended->value ? ended->value->rawAuthenticatorData->at(32) : 0;
    }
};

TEST_F(GetAssertionTest, SignsWhatSomeoneElsesLibraryAccepts) {
    const auto credential = registered("zoe", "user-1");
    const auto ended = signIn(assertion());
    ASSERT_TRUE(ended->value);
    const auto registration = verifyRegistration(credential, "localhost");
    EXPECT_TRUE(verifyAssertion(*ended->value, registration->publicKey, "localhost", true));
    EXPECT_FALSE(verifyAssertion(*ended->value, registration->publicKey, "example.org", true));
    EXPECT_EQ(ended->value->credentialId, credential.credentialId);
    EXPECT_EQ(ended->value->userId, bytesOf("user-1"));
    EXPECT_EQ(ended->value->rawAuthenticatorData->size(), 37U);
    EXPECT_EQ(ended->value->rawAuthenticatorData->at(32), 0x05);
    EXPECT_EQ(textOf(ended->value->rawClientDataJson),
              "{\"type\":\"webauthn.get\",\"challenge\":\"" +
                  base64URLEncode(bytesOf("assertion challenge")) +
                  "\",\"origin\":\"https://localhost:8443\",\"crossOrigin\":false}");
}

TEST_F(GetAssertionTest, NotesWhenThePasskeySigned) {
    registered("zoe", "user-1");
    EXPECT_FALSE(scope.credentials.find("localhost").front().lastUsed);
    signIn(assertion());
    EXPECT_EQ(scope.credentials.find("localhost").front().lastUsed,
              std::chrono::floor<std::chrono::seconds>(scope.clock.now()));
}

TEST_F(GetAssertionTest, PasskeyOfTheChipSignsWithTheChip) {
    scope.chip.isThere = true;
    const auto credential = registered("zoe", "user-1");
    scope.keys.failure = "The software store was asked.";
    const auto ended = signIn(assertion());
    ASSERT_TRUE(ended->value);
    const auto registration = verifyRegistration(credential, "localhost");
    EXPECT_TRUE(verifyAssertion(*ended->value, registration->publicKey, "localhost", true));
}

TEST_F(GetAssertionTest, TheCounterIsZeroInTheRegistrationAndInEveryAssertion) {
    const auto registration = verifyRegistration(registered("zoe", "user-1"), "localhost");
    EXPECT_EQ(registration->counter, 0U);
    for (int signIns = 1; signIns <= 3; ++signIns) {
        const auto ended = signIn(assertion());
        ASSERT_TRUE(ended->value);
        const ByteView data = *ended->value->rawAuthenticatorData;
        EXPECT_EQ(toHex(data.subspan(33, 4)), "00000000") << "sign-in " << signIns;
    }
}

TEST_F(GetAssertionTest, AChangedClientDataDoesNotVerify) {
    const auto credential = registered("zoe", "user-1");
    auto ended = signIn(assertion());
    ended->value->rawClientDataJson.back() = ' ';
    const auto registration = verifyRegistration(credential, "localhost");
    EXPECT_FALSE(verifyAssertion(*ended->value, registration->publicKey, "localhost", true));
}

TEST_F(GetAssertionTest, AsksThenVerifiesThenSignsThenCloses) {
    registered("zoe", "user-1");
    signIn(assertion());
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "sign", "closed"));
    ASSERT_EQ(scope.person.requests.size(), 1U);
    EXPECT_EQ(scope.person.requests[0].ceremony, Ceremony::signIn);
    EXPECT_EQ(scope.person.requests[0].relyingPartyIdentifier, "localhost");
    EXPECT_THAT(scope.person.requests[0].accountNames, ElementsAre("zoe"));
}

TEST_F(GetAssertionTest, VerifiesWhateverTheServicePrefers) {
    registered("zoe", "user-1");
    for (const auto& preference : everyPreference) {
        scope.person.events.clear();
        EXPECT_EQ(flagsFor(preference), 0x05) << preference.value_or("none");
        EXPECT_THAT(scope.person.events,
                    ElementsAre("sheet", "confirm", "verify", "sign", "closed"));
    }
}

TEST_F(GetAssertionTest, WhereNothingCanVerifyAPreferenceSignsAndClaimsNoMore) {
    const auto credential = registered("zoe", "user-1");
    scope.verifier.outcome = VerificationOutcome::unavailable;
    for (const auto& preference : everyPreference) {
        if (preference == "required")
            continue;
        EXPECT_EQ(flagsFor(preference), 0x01) << preference.value_or("none");
    }
    const auto ended = signIn(assertion());
    const auto registration = verifyRegistration(credential, "localhost");
    EXPECT_TRUE(verifyAssertion(*ended->value, registration->publicKey, "localhost", false));
    EXPECT_FALSE(verifyAssertion(*ended->value, registration->publicKey, "localhost", true));
}

TEST_F(GetAssertionTest, WhereNothingCanVerifyARequirementSignsNothing) {
    registered("zoe", "user-1");
    scope.verifier.outcome = VerificationOutcome::unavailable;
    auto request = assertion();
    request.userVerificationPreference = "required";
    expectError(*signIn(request), FailureKind::notAllowed, nothingCanVerify);
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "closed"));
}

TEST_F(GetAssertionTest, NoPreferenceExcusesAVerificationThatDoesNotSucceed) {
    registered("zoe", "user-1");
    using Outcome = VerificationOutcome;
    for (const Outcome outcome : {Outcome::failed, Outcome::undecided, Outcome::cancelled}) {
        scope.verifier.outcome = outcome;
        for (const auto& preference : everyPreference) {
            scope.person.events.clear();
            auto request = assertion();
            request.userVerificationPreference = preference;
            EXPECT_TRUE(signIn(request)->error) << preference.value_or("none");
            EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "closed"));
        }
    }
}

TEST_F(GetAssertionTest, SaysThatTheVerificationDidNotWork) {
    registered("zoe", "user-1");
    scope.verifier.outcome = VerificationOutcome::undecided;
    expectError(*signIn(assertion()), FailureKind::notAllowed, verificationDoesNotWork);
}

TEST_F(GetAssertionTest, RefusesAnotherRelyingPartyBeforeThePersonSeesAnything) {
    registered("zoe", "user-1");
    auto request = assertion();
    request.relyingPartyIdentifier = "example.org";
    expectError(
        *signIn(request), FailureKind::notAllowed,
        "Kelo does not serve passkeys for example.org. Use a web browser for that service.");
    EXPECT_THAT(scope.person.events, IsEmpty());
}

TEST_F(GetAssertionTest, SaysThatThereIsNoPasskeyYet) {
    expectError(*signIn(assertion()), FailureKind::noCredential, noPasskey);
    EXPECT_THAT(scope.person.events, IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(scope.folder.path() / "kelo"));
}

TEST_F(GetAssertionTest, SaysThatThereIsNoPasskeyWhenNoneIsAllowed) {
    registered("zoe", "user-1");
    auto request = assertion();
    request.allowedCredentials.emplace();
    request.allowedCredentials->push_back({Bytes(32)});
    request.allowedCredentials->push_back({Bytes()});
    expectError(*signIn(request), FailureKind::noCredential, noPasskey);
    EXPECT_THAT(scope.person.events, IsEmpty());
}

TEST_F(GetAssertionTest, AnEmptyAllowListAllowsEveryPasskeyOfTheRelyingParty) {
    registered("zoe", "user-1");
    registered("max", "user-2");
    auto request = assertion();
    request.allowedCredentials.emplace();
    EXPECT_TRUE(signIn(request)->value);
    EXPECT_EQ(scope.person.requests.at(0).accountNames.size(), 2U);
}

TEST_F(GetAssertionTest, OffersOnlyAllowedPasskeys) {
    const auto zoe = registered("zoe", "user-1");
    registered("max", "user-2");
    auto request = assertion();
    request.allowedCredentials.emplace();
    request.allowedCredentials->push_back({Bytes(32)});
    request.allowedCredentials->push_back(descriptor(zoe));
    const auto ended = signIn(request);
    EXPECT_THAT(scope.person.requests.at(0).accountNames, ElementsAre("zoe"));
    EXPECT_EQ(ended->value->credentialId, zoe.credentialId);
}

TEST_F(GetAssertionTest, TheChosenOfSeveralAccountsSignsWithItsOwnKey) {
    const auto zoe = registered("zoe", "user-1");
    scope.clock.time += std::chrono::seconds(5);
    const auto max = registered("max", "user-2");
    scope.person.choice = 1;
    const auto ended = signIn(assertion());
    EXPECT_THAT(scope.person.requests.at(0).accountNames, ElementsAre("max", "zoe"));
    ASSERT_TRUE(ended->value);
    EXPECT_EQ(ended->value->userId, bytesOf("user-1"));
    const auto key = [](const auto& credential) {
        return verifyRegistration(credential, "localhost")->publicKey;
    };
    EXPECT_TRUE(verifyAssertion(*ended->value, key(zoe), "localhost", true));
    EXPECT_FALSE(verifyAssertion(*ended->value, key(max), "localhost", true));
}

TEST_F(GetAssertionTest, OfSeveralPasskeysOfOneAccountTheNewestIsOffered) {
    registered("zoe", "user-1");
    const auto newest = registered("zoe the second", "user-1");
    EXPECT_EQ(signIn(assertion())->value->credentialId, newest.credentialId);
    EXPECT_THAT(scope.person.requests.at(0).accountNames, ElementsAre("zoe the second"));
}

TEST_F(GetAssertionTest, ARefusedRegistrationLeavesThePasskeyThatWorks) {
    const auto works = registered("zoe", "user-1");
    const auto refused = registered("zoe", "user-1");
    scope.credentials.noteRefused("localhost", refused.credentialId);
    const auto ended = signIn(assertion());
    EXPECT_EQ(ended->value->credentialId, works.credentialId);
    const auto key = verifyRegistration(works, "localhost")->publicKey;
    EXPECT_TRUE(verifyAssertion(*ended->value, key, "localhost", true));
}

TEST_F(GetAssertionTest, ASignInThatWasRefusedIsFollowedByOneWithAnotherPasskey) {
    const auto older = registered("zoe", "user-1");
    const auto newer = registered("zoe", "user-1");
    for (int round = 0; round < 2; ++round) {
        for (const auto& expected : {newer, older}) {
            const auto ended = signIn(assertion());
            EXPECT_EQ(ended->value->credentialId, expected.credentialId) << "round " << round;
            scope.credentials.noteRefused("localhost", ended->value->credentialId);
        }
    }
}

TEST_F(GetAssertionTest, TheServiceChoosesAmongThePasskeysOfOneAccount) {
    const auto older = registered("zoe", "user-1");
    registered("zoe the second", "user-1");
    auto request = assertion();
    request.allowedCredentials.emplace();
    request.allowedCredentials->push_back(descriptor(older));
    EXPECT_EQ(signIn(request)->value->credentialId, older.credentialId);
    EXPECT_THAT(scope.person.requests.at(0).accountNames, ElementsAre("zoe"));
}

TEST_F(GetAssertionTest, AnotherAccountKeepsItsPlaceBesideOneWithSeveralPasskeys) {
    registered("zoe", "user-1");
    registered("zoe the second", "user-1");
    registered("max", "user-2");
    const auto third = registered("zoe the third", "user-1");
    scope.credentials.noteRefused("localhost", third.credentialId);
    scope.person.choice = 1;
    const auto ended = signIn(assertion());
    EXPECT_THAT(scope.person.requests.at(0).accountNames, ElementsAre("zoe the second", "max"));
    EXPECT_EQ(ended->value->userId, bytesOf("user-2"));
}

TEST_F(GetAssertionTest, PresentsOverTheAnchorItWasGiven) {
    registered("zoe", "user-1");
    const auto anchor = std::make_shared<SomeWindow>();
    authenticator::GetAssertion operation(scope.parts, assertion(), anchor);
    EXPECT_TRUE(scope.run(operation.run())->value);
    EXPECT_EQ(scope.person.anchor, anchor);
}

TEST_F(GetAssertionTest, AnAccountThatWasNotOfferedIsNoAgreement) {
    registered("zoe", "user-1");
    scope.person.choice = 1;
    expectError(*signIn(assertion()), FailureKind::cancelled, "The passkey request was cancelled.");
}

TEST_F(GetAssertionTest, EndsAsCancelledWhenThePersonDeclines) {
    registered("zoe", "user-1");
    scope.person.choice = std::nullopt;
    expectError(*signIn(assertion()), FailureKind::cancelled, "The passkey request was cancelled.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "closed"));
}

TEST_F(GetAssertionTest, SignsNothingForAPersonItCouldNotVerify) {
    registered("zoe", "user-1");
    scope.verifier.outcome = VerificationOutcome::failed;
    expectError(
        *signIn(assertion()), FailureKind::notAllowed,
        "Kelo could not verify that it is you, so the passkey was not used. Please try again.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "closed"));
}

TEST_F(GetAssertionTest, EndsAsCancelledWhenThePersonCancelsTheVerification) {
    registered("zoe", "user-1");
    scope.verifier.outcome = VerificationOutcome::cancelled;
    expectError(*signIn(assertion()), FailureKind::cancelled, "The passkey request was cancelled.");
}

TEST_F(GetAssertionTest, PassesTheKeyStoresReasonOn) {
    registered("zoe", "user-1");
    scope.keys.failure = "Your keyring is locked.";
    expectError(*signIn(assertion()), FailureKind::storage, "Your keyring is locked.");
    EXPECT_EQ(scope.person.events.back(), "closed");
}

TEST_F(GetAssertionTest, CancelWhileTheKeyringWaitsEndsAtOnce) {
    registered("zoe", "user-1");
    scope.keys.hangs = true;
    const auto ended = signIn(assertion());
    ASSERT_TRUE(ended->pending());
    scope.person.pressCancel();
    scope.person.pressCancel();
    scope.loop.runUntilIdle();
    expectError(*ended, FailureKind::cancelled, "The passkey request was cancelled.");
    EXPECT_EQ(scope.person.events.back(), "closed");
}

TEST_F(GetAssertionTest, ADamagedFileIsReportedBeforeThePersonSeesAnything) {
    std::filesystem::create_directories(scope.folder.path() / "kelo" / "passkeys.sqlite");
    const auto ended = signIn(assertion());
    ASSERT_TRUE(ended->error);
    EXPECT_EQ(ended->error->kind(), FailureKind::storage);
    EXPECT_THAT(scope.person.events, IsEmpty());
}

} // namespace kelo
