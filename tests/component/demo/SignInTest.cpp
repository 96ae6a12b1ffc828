#include "DemoFixture.h"

namespace kelo::demo {
namespace {

using fakes::SoftwarePasskey;
using nlohmann::json;

/// Ada has a passkey; the browser that registered it is done, and another one signs in.
class PasskeySignIn : public DemoFixture {
protected:
    void SetUp() override {
        DemoFixture::SetUp();
        HttpsClient first(authority(), service->origin());
        ASSERT_EQ(signInWithPassword(first).status, 303u);
        ASSERT_EQ(registerPasskey(first, *passkey).status, 200u);
    }

    void expectRefused(const Response& response, const std::string& reason) {
        EXPECT_EQ(response.status, 401u);
        EXPECT_EQ(response.reason(), reason);
        EXPECT_EQ(response.json().value("url", ""),
                  service->origin() + "/login?error=CredentialsSignin");
        EXPECT_EQ(response.setCookie(sessionCookie), "");
        EXPECT_EQ(browser->get("/api/csrf").status, 401u);
    }
};

TEST_F(PasskeySignIn, RegisteredPasskeySignsIn) {
    const auto response = signInWithPasskey(*browser, *passkey);
    EXPECT_EQ(response.status, 200u);
    EXPECT_EQ(response.json(), json({{"url", service->origin()}}));
    EXPECT_NE(browser->get("/").body.find("Welcome, Ada"), std::string::npos);
}

TEST_F(PasskeySignIn, SessionCookieIsSecureHttpOnlyLaxAndLasts) {
    const auto line = signInWithPasskey(*browser, *passkey).setCookie(sessionCookie);
    for (const char* attribute :
         {"; Secure", "; HttpOnly", "; SameSite=Lax", "; Path=/", "; Max-Age=2592000"})
        EXPECT_NE(line.find(attribute), std::string::npos) << line;
    EXPECT_EQ(line.find("Domain"), std::string::npos) << line;
}

TEST_F(PasskeySignIn, OptionsAskForAnyVerifiedPasskeyOfThisService) {
    const auto options = browser->post("/api/account/passkey/auth/options").json();
    EXPECT_EQ(options.at("rpId"), "localhost");
    EXPECT_EQ(options.at("userVerification"), "required");
    EXPECT_EQ(options.at("timeout"), 300000);
    EXPECT_EQ(options.at("allowCredentials"), json::array());
    EXPECT_EQ(passkey->fromBase64Url(options.at("challenge").get<std::string>()).size(), 32u);
}

TEST_F(PasskeySignIn, EveryChallengeIsNew) {
    EXPECT_NE(assertionChallenge(*browser), assertionChallenge(*browser));
}

TEST_F(PasskeySignIn, ReplayedChallengeIsRefused) {
    const auto assertion = passkey->assertion(assertionChallenge(*browser));
    HttpsClient first(authority(), service->origin());
    ASSERT_EQ(postCallback(first, assertion).status, 200u);
    expectRefused(postCallback(*browser, assertion), "The challenge is unknown, used or expired");
}

TEST_F(PasskeySignIn, ChallengeOfARefusedAssertionIsUsedUp) {
    auto assertion = passkey->assertion(assertionChallenge(*browser));
    auto wrong = assertion;
    wrong["response"]["userHandle"] = "AAAA";
    expectRefused(postCallback(*browser, wrong), "The passkey belongs to another account");
    expectRefused(postCallback(*browser, assertion), "The challenge is unknown, used or expired");
}

TEST_F(PasskeySignIn, InventedChallengeIsRefused) {
    expectRefused(postCallback(*browser, passkey->assertion(Bytes(32, 7))),
                  "The challenge is unknown, used or expired");
}

TEST_F(PasskeySignIn, RegistrationChallengeIsRefused) {
    HttpsClient other(authority(), service->origin());
    ASSERT_EQ(signInWithPassword(other).status, 303u);
    const auto challenge = creationChallenge(other, *passkey);
    expectRefused(postCallback(*browser, passkey->assertion(challenge)),
                  "The challenge is unknown, used or expired");
}

TEST_F(PasskeySignIn, WrongOriginIsRefused) {
    passkey->origin = "https://localhost:1";
    expectRefused(signInWithPasskey(*browser, *passkey), "The passkey was used on another site");
}

TEST_F(PasskeySignIn, OtherCeremonyTypeIsRefused) {
    passkey->assertionType = "webauthn.create";
    expectRefused(signInWithPasskey(*browser, *passkey), "The client data is for another ceremony");
}

TEST_F(PasskeySignIn, CrossOriginUseIsRefused) {
    passkey->crossOrigin = true;
    expectRefused(signInWithPasskey(*browser, *passkey),
                  "The passkey was used inside another site");
}

TEST_F(PasskeySignIn, ClientDataWithFurtherMembersIsAccepted) {
    passkey->extraClientData = ",\"extraData\":\"clientDataJSON may be extended\"";
    EXPECT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
}

TEST_F(PasskeySignIn, ClientDataInAnotherSpellingIsRefused) {
    const auto challenge = assertionChallenge(*browser);
    auto assertion = passkey->assertion(challenge);
    auto spaced = passkey->clientData("webauthn.get", challenge);
    spaced.insert(1, " ");
    const auto data = passkey->authenticatorData(passkey->assertionFlags);
    assertion["response"]["clientDataJSON"] = passkey->base64Url(spaced);
    assertion["response"]["signature"] = passkey->base64Url(passkey->sign(data, spaced));
    expectRefused(postCallback(*browser, assertion), "The client data is malformed");
}

TEST_F(PasskeySignIn, OtherRelyingPartyIsRefused) {
    passkey->relyingParty = "example.org";
    expectRefused(signInWithPasskey(*browser, *passkey), "The passkey belongs to another service");
}

TEST_F(PasskeySignIn, AbsentUserIsRefused) {
    passkey->assertionFlags = 0x04;
    expectRefused(signInWithPasskey(*browser, *passkey), "The user was not present");
}

TEST_F(PasskeySignIn, UnverifiedUserIsRefused) {
    passkey->assertionFlags = 0x01;
    expectRefused(signInWithPasskey(*browser, *passkey), "The user was not verified");
}

TEST_F(PasskeySignIn, BackedUpWithoutBeingEligibleIsRefused) {
    passkey->assertionFlags = 0x15;
    expectRefused(signInWithPasskey(*browser, *passkey),
                  "The passkey says it is backed up and cannot be");
}

TEST_F(PasskeySignIn, ChangedBackupEligibilityIsRefused) {
    passkey->assertionFlags = 0x0d;
    expectRefused(signInWithPasskey(*browser, *passkey),
                  "The passkey changed whether it can be backed up");
}

TEST_F(PasskeySignIn, AttestedDataInAnAssertionIsRefused) {
    passkey->assertionFlags = 0x45;
    expectRefused(signInWithPasskey(*browser, *passkey),
                  "The authenticator data holds a new passkey");
}

TEST_F(PasskeySignIn, TrailingAuthenticatorDataIsRefused) {
    const auto challenge = assertionChallenge(*browser);
    auto assertion = passkey->assertion(challenge);
    auto data = passkey->authenticatorData(passkey->assertionFlags);
    data.push_back(0);
    const auto clientData = passkey->clientData("webauthn.get", challenge);
    assertion["response"]["authenticatorData"] = passkey->base64Url(data);
    assertion["response"]["signature"] = passkey->base64Url(passkey->sign(data, clientData));
    expectRefused(postCallback(*browser, assertion), "The authenticator data has the wrong size");
}

TEST_F(PasskeySignIn, FlippedSignatureBitIsRefused) {
    const auto challenge = assertionChallenge(*browser);
    auto assertion = passkey->assertion(challenge);
    auto signature = passkey->fromBase64Url(assertion["response"]["signature"].get<std::string>());
    signature.back() ^= 1;
    assertion["response"]["signature"] = passkey->base64Url(signature);
    expectRefused(postCallback(*browser, assertion), "The signature does not match");
}

TEST_F(PasskeySignIn, SignatureOfAnotherKeyIsRefused) {
    SoftwarePasskey other(service->origin());
    other.credentialId = passkey->credentialId;
    other.userHandle = passkey->userHandle;
    expectRefused(signInWithPasskey(*browser, other), "The signature does not match");
}

TEST_F(PasskeySignIn, UnknownPasskeyIsRefused) {
    SoftwarePasskey other(service->origin());
    other.userHandle = passkey->userHandle;
    expectRefused(signInWithPasskey(*browser, other), "The passkey is not registered");
}

TEST_F(PasskeySignIn, HandleOfAnotherAccountIsRefused) {
    HttpsClient grace(authority(), service->origin());
    ASSERT_EQ(signInWithPassword(grace, "grace@example.org", "nanosecond").status, 303u);
    SoftwarePasskey hers(service->origin());
    creationChallenge(grace, hers);
    passkey->userHandle = hers.userHandle;
    expectRefused(signInWithPasskey(*browser, *passkey), "The passkey belongs to another account");
}

TEST_F(PasskeySignIn, CounterThatStandsStillIsRefused) {
    passkey->counter = 5;
    HttpsClient first(authority(), service->origin());
    ASSERT_EQ(signInWithPasskey(first, *passkey).status, 200u);
    const std::string reason = "The passkey's counter went backwards, it may have been copied";
    expectRefused(signInWithPasskey(*browser, *passkey), reason);
    passkey->counter = 0;
    expectRefused(signInWithPasskey(*browser, *passkey), reason);
    passkey->counter = 6;
    EXPECT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
}

TEST_F(PasskeySignIn, MalformedAssertionIsRefused) {
    const std::string reason = "The assertion is malformed";
    const auto good = passkey->assertion(assertionChallenge(*browser));
    expectRefused(postCallback(*browser, json::array()), reason);
    expectRefused(postCallback(*browser, json("text")), reason);
    for (const char* member : {"id", "rawId", "type", "response"}) {
        auto bad = good;
        bad.erase(member);
        expectRefused(postCallback(*browser, bad), reason);
    }
    for (const char* member : {"clientDataJSON", "authenticatorData", "signature", "userHandle"}) {
        auto bad = good;
        bad["response"][member] = "not base64url!";
        expectRefused(postCallback(*browser, bad), reason);
        bad["response"][member] = 7;
        expectRefused(postCallback(*browser, bad), reason);
        bad["response"].erase(member);
        expectRefused(postCallback(*browser, bad), reason);
    }
    auto padded = good;
    padded["response"]["userHandle"] = good["response"]["userHandle"].get<std::string>() + "==";
    expectRefused(postCallback(*browser, padded), reason);
    EXPECT_EQ(postCallback(*browser, good).status, 200u) << "none of them used the challenge up";
}

TEST_F(PasskeySignIn, CallbackWithoutCsrfCookieIsRefused) {
    const auto assertion = passkey->assertion(assertionChallenge(*browser));
    const auto form = callbackForm(*browser, assertion);
    browser->cookies.clear();
    expectRefused(browser->postForm("/api/auth/callback/credentials", form),
                  "The CSRF token does not belong to the cookie");
}

TEST_F(PasskeySignIn, CallbackWithTheTokenOfAnotherBrowserIsRefused) {
    HttpsClient other(authority(), service->origin());
    const auto assertion = passkey->assertion(assertionChallenge(*browser));
    const auto form = callbackForm(other, assertion);
    callbackForm(*browser, assertion);
    expectRefused(browser->postForm("/api/auth/callback/credentials", form),
                  "The CSRF token does not belong to the cookie");
}

TEST_F(PasskeySignIn, PlantedCsrfCookieIsRefused) {
    const auto assertion = passkey->assertion(assertionChallenge(*browser));
    auto form = callbackForm(*browser, assertion);
    const std::string seal(43, 'A');
    form["csrfToken"] = "planted";
    browser->cookies[csrfCookie] = "planted." + seal;
    expectRefused(browser->postForm("/api/auth/callback/credentials", form),
                  "The CSRF token does not belong to the cookie");
}

TEST_F(PasskeySignIn, CallbackUrlOfAnotherSiteIsRefused) {
    for (const std::string& url : {std::string("https://example.org"), std::string(),
                                   std::string("/"), service->origin() + ".example.org"}) {
        auto form = callbackForm(*browser, passkey->assertion(assertionChallenge(*browser)));
        form["callbackUrl"] = url;
        expectRefused(browser->postForm("/api/auth/callback/credentials", form),
                      "The callback URL is not of this service");
    }
}

TEST_F(PasskeySignIn, RequestFromAnotherSitesPageIsRefused) {
    const auto form = callbackForm(*browser, passkey->assertion(assertionChallenge(*browser)));
    const auto path = "/api/auth/callback/credentials";
    EXPECT_EQ(browser->postForm(path, form, {{"Origin", "https://example.org"}}).status, 403u);
    EXPECT_EQ(browser->postForm(path, form, {{"Origin", "null"}}).status, 403u);
    EXPECT_EQ(browser->postForm(path, form, {{"Origin", service->origin()}}).status, 200u);
}

TEST_F(PasskeySignIn, MalformedFormIsAnswered) {
    const auto path = "/api/auth/callback/credentials";
    const auto type = "application/x-www-form-urlencoded";
    EXPECT_EQ(browser->post(path, type, "csrfToken=%zz").status, 400u);
    EXPECT_EQ(browser->post(path, type, "a=1&a=2").status, 400u);
    EXPECT_EQ(browser->post(path, "application/json", "{}").status, 415u);
    EXPECT_EQ(browser->post(path, type, "").header("location"),
              service->origin() + "/login?error=CredentialsSignin");
}

TEST_F(PasskeySignIn, BrowserWithoutScriptIsRedirected) {
    auto form = callbackForm(*browser, passkey->assertion(assertionChallenge(*browser)));
    form.erase("json");
    const auto response = browser->postForm("/api/auth/callback/credentials", form);
    EXPECT_EQ(response.status, 303u);
    EXPECT_EQ(response.header("location"), service->origin());
    EXPECT_NE(response.setCookie(sessionCookie), "");
}

TEST_F(PasskeySignIn, CsrfTokenComesWithAHostCookieThatScriptsCannotRead) {
    const auto response = browser->get("/api/auth/csrf");
    const auto line = response.setCookie(csrfCookie);
    for (const char* attribute : {"; Secure", "; HttpOnly", "; SameSite=Lax", "; Path=/"})
        EXPECT_NE(line.find(attribute), std::string::npos) << line;
    EXPECT_EQ(line.find("Domain"), std::string::npos) << line;
    EXPECT_FALSE(response.json().at("csrfToken").get<std::string>().empty());
}

TEST_F(PasskeySignIn, SecondPageKeepsTheFirstPagesToken) {
    const auto first = browser->get("/api/auth/csrf").json();
    EXPECT_EQ(browser->get("/api/auth/csrf").json(), first);
}

TEST_F(PasskeySignIn, SigningInAgainEndsTheOldSession) {
    ASSERT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
    HttpsClient stale(authority(), service->origin());
    stale.cookies = browser->cookies;
    ASSERT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
    EXPECT_EQ(stale.get("/api/csrf").status, 401u);
    EXPECT_EQ(browser->get("/api/csrf").status, 200u);
}

TEST_F(DemoFixture, OriginOfThePasskeysCanBeOverridden) {
    startService({"--origin", "https://assistant.example.com"});
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    EXPECT_EQ(registerPasskey(*browser, *passkey).reason(), "The passkey was used on another site");
    passkey->origin = "https://assistant.example.com";
    EXPECT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    EXPECT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
}

} // namespace
} // namespace kelo::demo
