#include "DemoFixture.h"

namespace kelo::demo {
namespace {

using fakes::SoftwarePasskey;
using nlohmann::json;

constexpr const char* optionsPath = "/api/account/passkey/register/options";
constexpr const char* verifyPath = "/api/account/passkey/register/verify";

class Registration : public DemoFixture {
protected:
    void SetUp() override {
        DemoFixture::SetUp();
        ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    }

    void expectRefused(const Response& response, const std::string& reason) {
        EXPECT_EQ(response.status, 400u);
        EXPECT_EQ(response.reason(), reason);
        EXPECT_NE(browser->get("/").body.find("No passkeys yet"), std::string::npos);
    }

    std::string token() { return browser->get("/api/csrf").json().value("token", ""); }

    std::string code() {
        const auto page = browser->get("/").body;
        const std::string mark = "<output id=\"code\">";
        return page.substr(page.find(mark) + mark.size(), 6);
    }
};

TEST_F(Registration, PasskeyIsShownWithItsLabelAndDate) {
    ASSERT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    const auto page = browser->get("/").body;
    EXPECT_NE(page.find("Mac (Kelo)"), std::string::npos);
    EXPECT_NE(page.find("<time datetime=\"20"), std::string::npos);
}

TEST_F(Registration, OptionsDescribeTheAccountAndWhatIsAskedFor) {
    const auto options = browser->post(optionsPath, "", "", {{"x-csrf-token", token()}}).json();
    EXPECT_EQ(options.at("rp"), json({{"id", "localhost"}, {"name", "Kelo"}}));
    EXPECT_EQ(options.at("user").at("name"), "ada@example.org");
    EXPECT_EQ(options.at("user").at("displayName"), "Ada Lovelace");
    EXPECT_EQ(options.at("pubKeyCredParams"), json::array({{{"type", "public-key"}, {"alg", -7}}}));
    EXPECT_EQ(options.at("excludeCredentials"), json::array());
    EXPECT_EQ(options.at("attestation"), "none");
    EXPECT_EQ(options.at("authenticatorSelection").at("residentKey"), "required");
    EXPECT_EQ(options.at("authenticatorSelection").at("userVerification"), "required");
    const auto handle =
        SoftwarePasskey::fromBase64Url(options.at("user").at("id").get<std::string>());
    EXPECT_GE(handle.size(), 1u);
    EXPECT_LE(handle.size(), 64u);
}

TEST_F(Registration, MfaCodeConfirms) {
    EXPECT_EQ(registerPasskey(*browser, *passkey, code()).status, 200u);
}

TEST_F(Registration, MfaCodeIsGoodOnce) {
    const auto used = code();
    ASSERT_EQ(registerPasskey(*browser, *passkey, used).status, 200u);
    SoftwarePasskey second(service->origin());
    const auto response = registerPasskey(*browser, second, used);
    EXPECT_EQ(response.status, 400u);
    EXPECT_EQ(response.reason(), "Invalid code");
}

TEST_F(Registration, RegistrationWithWrongCodeGivesReason) {
    expectRefused(registerPasskey(*browser, *passkey, "wrong"), "Invalid code");
}

TEST_F(Registration, RegistrationWithoutAnyCodeGivesReason) {
    const auto challenge = creationChallenge(*browser, *passkey);
    auto body = registrationBody(passkey->attestation(challenge));
    body.erase("password");
    body["mfaCode"] = 123456;
    expectRefused(postRegistration(*browser, body), "Invalid code");
}

TEST_F(Registration, PasswordOfAnotherAccountIsRefused) {
    expectRefused(registerPasskey(*browser, *passkey, "nanosecond"), "Invalid code");
}

TEST_F(Registration, EleventhWrongTryInAMinuteHasToWait) {
    for (int count = 0; count < 10; ++count)
        ASSERT_EQ(registerPasskey(*browser, *passkey, "wrong").status, 400u);
    const auto response = registerPasskey(*browser, *passkey);
    EXPECT_EQ(response.status, 429u);
    EXPECT_EQ(response.reason(), "Too many attempts, wait a minute and try again");
    HttpsClient other(authority(), service->origin());
    EXPECT_EQ(signInWithPassword(other).status, 429u) << "the page counts the same tries";
    EXPECT_EQ(signInWithPassword(other, "grace@example.org", "nanosecond").status, 303u);
}

TEST_F(Registration, SignedOutIsRefused) {
    const auto stale = token();
    browser->cookies.clear();
    EXPECT_EQ(browser->get("/api/csrf").status, 401u);
    EXPECT_EQ(browser->post(optionsPath, "", "", {{"x-csrf-token", stale}}).status, 401u);
    EXPECT_EQ(browser->post(verifyPath, "application/json", "{}", {{"x-csrf-token", stale}}).status,
              401u);
}

TEST_F(Registration, InventedSessionCookieIsRefused) {
    browser->cookies[sessionCookie] = std::string(43, 'A');
    EXPECT_EQ(browser->get("/api/csrf").status, 401u);
}

TEST_F(Registration, MissingOrForeignCsrfTokenIsRefused) {
    HttpsClient other(authority(), service->origin());
    ASSERT_EQ(signInWithPassword(other).status, 303u);
    const auto foreign = other.get("/api/csrf").json().value("token", "");
    for (const auto& headers :
         {Headers{}, Headers{{"x-csrf-token", ""}}, Headers{{"x-csrf-token", foreign}}}) {
        EXPECT_EQ(browser->post(optionsPath, "", "", headers).status, 403u);
        EXPECT_EQ(browser->post(verifyPath, "application/json", "{}", headers).status, 403u);
    }
}

TEST_F(Registration, CookiesOfOtherSitesInTheSameHeaderDoNoHarm) {
    const auto session = browser->cookies.at(sessionCookie);
    const auto line = std::string("a=1; ") + sessionCookie + "=stale; b=\"x;" + sessionCookie +
                      "=" + session + "; =; c";
    EXPECT_EQ(browser->get("/api/csrf", {{"Cookie", line}}).status, 200u);
}

TEST_F(Registration, ReplayedChallengeIsRefused) {
    const auto challenge = creationChallenge(*browser, *passkey);
    auto body = registrationBody(passkey->attestation(challenge), "wrong");
    expectRefused(postRegistration(*browser, body), "Invalid code");
    body = registrationBody(passkey->attestation(challenge));
    expectRefused(postRegistration(*browser, body), "The challenge is unknown, used or expired");
}

TEST_F(Registration, ChallengeOfAnotherSessionIsRefused) {
    HttpsClient other(authority(), service->origin());
    ASSERT_EQ(signInWithPassword(other).status, 303u);
    const auto challenge = creationChallenge(other, *passkey);
    expectRefused(postRegistration(*browser, registrationBody(passkey->attestation(challenge))),
                  "The challenge is unknown, used or expired");
}

TEST_F(Registration, SignInChallengeIsRefused) {
    const auto challenge = assertionChallenge(*browser);
    expectRefused(postRegistration(*browser, registrationBody(passkey->attestation(challenge))),
                  "The challenge is unknown, used or expired");
}

TEST_F(Registration, WrongOriginIsRefused) {
    passkey->origin = "https://example.org";
    expectRefused(registerPasskey(*browser, *passkey), "The passkey was used on another site");
}

TEST_F(Registration, OtherCeremonyTypeIsRefused) {
    passkey->registrationType = "webauthn.get";
    expectRefused(registerPasskey(*browser, *passkey), "The client data is for another ceremony");
}

TEST_F(Registration, CrossOriginUseIsRefused) {
    passkey->crossOrigin = true;
    expectRefused(registerPasskey(*browser, *passkey), "The passkey was used inside another site");
}

TEST_F(Registration, OtherRelyingPartyIsRefused) {
    passkey->relyingParty = "example.org";
    expectRefused(registerPasskey(*browser, *passkey), "The passkey belongs to another service");
}

TEST_F(Registration, AbsentUserIsRefused) {
    passkey->registrationFlags = 0x44;
    expectRefused(registerPasskey(*browser, *passkey), "The user was not present");
}

TEST_F(Registration, UnverifiedUserIsRefused) {
    passkey->registrationFlags = 0x41;
    expectRefused(registerPasskey(*browser, *passkey), "The user was not verified");
}

TEST_F(Registration, MissingAttestedDataFlagIsRefused) {
    passkey->registrationFlags = 0x05;
    expectRefused(registerPasskey(*browser, *passkey),
                  "The authenticator data holds no new passkey");
}

TEST_F(Registration, BackedUpWithoutBeingEligibleIsRefused) {
    passkey->registrationFlags = 0x55;
    expectRefused(registerPasskey(*browser, *passkey),
                  "The passkey says it is backed up and cannot be");
}

TEST_F(Registration, BackupEligiblePasskeyKeepsSigningIn) {
    passkey->registrationFlags = 0x4d;
    ASSERT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    passkey->assertionFlags = 0x1d;
    EXPECT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
    passkey->assertionFlags = 0x05;
    EXPECT_EQ(signInWithPasskey(*browser, *passkey).status, 401u);
}

TEST_F(Registration, NamedModelIsRefused) {
    passkey->aaguid[3] = 1;
    expectRefused(registerPasskey(*browser, *passkey),
                  "The authenticator names its model although nothing vouches for it");
}

TEST_F(Registration, OtherAttestationFormatsAreRefused) {
    passkey->format = "packed";
    expectRefused(registerPasskey(*browser, *passkey), "The attestation format is not \"none\"");
    passkey->format = "none";
    passkey->statement = {0xa1, 0x61, 'x', 0x01};
    expectRefused(registerPasskey(*browser, *passkey), "The attestation format is not \"none\"");
}

TEST_F(Registration, LongCredentialIdIsAccepted) {
    passkey->credentialId.assign(1023, 0x5a);
    ASSERT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    EXPECT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
}

TEST_F(Registration, TooLongCredentialIdIsRefused) {
    passkey->credentialId.assign(1024, 0x5a);
    expectRefused(registerPasskey(*browser, *passkey), "The attestation is malformed");
}

TEST_F(Registration, CredentialIdsThatDifferAreRefused) {
    const auto challenge = creationChallenge(*browser, *passkey);
    auto attestation = passkey->attestation(challenge);
    attestation["id"] = attestation["rawId"] = "AAAA";
    expectRefused(postRegistration(*browser, registrationBody(attestation)),
                  "The credential ids do not match");
}

TEST_F(Registration, TakenCredentialIdIsRefused) {
    ASSERT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    HttpsClient grace(authority(), service->origin());
    ASSERT_EQ(signInWithPassword(grace, "grace@example.org", "nanosecond").status, 303u);
    SoftwarePasskey thief(service->origin());
    thief.credentialId = passkey->credentialId;
    const auto response = registerPasskey(grace, thief, "nanosecond");
    EXPECT_EQ(response.status, 400u);
    EXPECT_EQ(response.reason(), "This passkey is registered already");
    EXPECT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
}

TEST_F(Registration, KeyOfAnotherKindIsRefused) {
    const auto good = passkey->publicKey;
    const std::string reason = "The public key is not an ES256 key";
    passkey->publicKey[4] = 0x27; // algorithm -8
    expectRefused(registerPasskey(*browser, *passkey), reason);
    passkey->publicKey = good;
    passkey->publicKey[6] = 0x02; // curve P-384
    expectRefused(registerPasskey(*browser, *passkey), reason);
    passkey->publicKey = good;
    passkey->publicKey.back() ^= 1; // a point beside the curve
    expectRefused(registerPasskey(*browser, *passkey), reason);
}

TEST_F(Registration, BytesAfterTheKeyAreRefused) {
    passkey->publicKey.push_back(0);
    expectRefused(registerPasskey(*browser, *passkey), "The authenticator data has the wrong size");
}

TEST_F(Registration, MalformedAttestationObjectIsRefused) {
    const auto good = passkey->attestationObject();
    auto trailing = good;
    trailing.push_back(0);
    const Bytes truncated(good.begin(), good.begin() + 100);
    auto largerMap = good;
    largerMap[0] = 0xa4;
    const Bytes hugeMap{0xbb, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    for (const auto& bad : {trailing, truncated, largerMap, hugeMap, Bytes{}}) {
        const auto challenge = creationChallenge(*browser, *passkey);
        auto attestation = passkey->attestation(challenge);
        attestation["response"]["attestationObject"] = passkey->base64Url(bad);
        expectRefused(postRegistration(*browser, registrationBody(attestation)),
                      "The attestation object is malformed");
    }
}

TEST_F(Registration, MalformedRequestsAreAnswered) {
    const Headers headers{{"x-csrf-token", token()}};
    const auto post = [&](const std::string& type, const std::string& body) {
        return browser->post(verifyPath, type, body, headers);
    };
    EXPECT_EQ(post("text/plain", "{}").status, 415u);
    expectRefused(post("application/json", "{"), "The request is malformed");
    expectRefused(post("application/json", "[]"), "The request is malformed");
    expectRefused(post("application/json", "\xff"), "The request is malformed");
    expectRefused(post("application/json", std::string(60000, '[')), "The request is malformed");
    expectRefused(post("application/json", "{}"), "The attestation is malformed");
    expectRefused(post("application/json", R"({"response":7})"), "The attestation is malformed");
}

TEST_F(Registration, LabelIsShownAsTextAndMissingOneHasAName) {
    const auto challenge = creationChallenge(*browser, *passkey);
    auto body = registrationBody(passkey->attestation(challenge));
    body["label"] = "<b>&{{code}}";
    ASSERT_EQ(postRegistration(*browser, body).status, 200u);
    EXPECT_NE(browser->get("/").body.find("&lt;b&gt;&amp;{{code}}"), std::string::npos);

    SoftwarePasskey second(service->origin());
    body = registrationBody(second.attestation(creationChallenge(*browser, second)));
    body["label"] = "  ";
    ASSERT_EQ(postRegistration(*browser, body).status, 200u);
    EXPECT_NE(browser->get("/").body.find(">Passkey<"), std::string::npos);
}

TEST_F(Registration, TooLongLabelIsRefused) {
    const auto challenge = creationChallenge(*browser, *passkey);
    auto body = registrationBody(passkey->attestation(challenge));
    body["label"] = std::string(201, 'x');
    expectRefused(postRegistration(*browser, body), "The label is too long");
}

} // namespace
} // namespace kelo::demo
