#include "DemoFixture.h"

namespace kelo::demo {
namespace {

std::unique_ptr<test::TemporaryFolder> sharedDirectory;

constexpr const char* callbackPath = "/api/auth/callback/credentials";

} // namespace

void DemoFixture::SetUpTestSuite() {
    sharedDirectory = std::make_unique<test::TemporaryFolder>();
    const auto outcome = runDemoService({"--init", "--authority", authority().string()});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
}

void DemoFixture::TearDownTestSuite() {
    sharedDirectory.reset();
}

std::filesystem::path DemoFixture::authority() {
    return sharedDirectory->path() / "authority";
}

void DemoFixture::startService(const std::vector<std::string>& more) {
    service.reset();
    service = std::make_unique<DemoProcess>(authority(), more);
    browser = std::make_unique<HttpsClient>(authority(), service->origin());
    passkey = std::make_unique<fakes::SoftwarePasskey>(service->origin());
}

Response DemoFixture::signInWithPassword(HttpsClient& client, const std::string& email,
                                         const std::string& password) {
    const auto token = client.get("/api/auth/csrf").json().at("csrfToken").get<std::string>();
    return client.postForm("/login",
                           {{"csrfToken", token}, {"email", email}, {"password", password}});
}

Bytes DemoFixture::creationChallenge(HttpsClient& client, fakes::SoftwarePasskey& made) {
    const auto token = client.get("/api/csrf").json().at("token").get<std::string>();
    const auto options =
        client.post("/api/account/passkey/register/options", "", "", {{"x-csrf-token", token}})
            .json();
    made.userHandle = made.fromBase64Url(options.at("user").at("id").get<std::string>());
    return made.fromBase64Url(options.at("challenge").get<std::string>());
}

nlohmann::json DemoFixture::registrationBody(const nlohmann::json& attestation,
                                             const std::string& passwordOrCode) {
    return {{"response", attestation},
            {"label", "Mac (Kelo)"},
            {"password", passwordOrCode},
            {"mfaCode", passwordOrCode}};
}

Response DemoFixture::postRegistration(HttpsClient& client, const nlohmann::json& body) {
    const auto token = client.get("/api/csrf").json().value("token", "");
    return client.post("/api/account/passkey/register/verify", "application/json", body.dump(),
                       {{"x-csrf-token", token}});
}

Response DemoFixture::registerPasskey(HttpsClient& client, fakes::SoftwarePasskey& made,
                                      const std::string& passwordOrCode) {
    const auto challenge = creationChallenge(client, made);
    return postRegistration(client, registrationBody(made.attestation(challenge), passwordOrCode));
}

Bytes DemoFixture::assertionChallenge(HttpsClient& client) {
    const auto options = client.post("/api/account/passkey/auth/options").json();
    return fakes::SoftwarePasskey::fromBase64Url(options.at("challenge").get<std::string>());
}

std::map<std::string, std::string> DemoFixture::callbackForm(HttpsClient& client,
                                                             const nlohmann::json& assertion) {
    const auto token = client.get("/api/auth/csrf").json().at("csrfToken").get<std::string>();
    return {{"csrfToken", token},
            {"passkeyAssertion", assertion.dump()},
            {"callbackUrl", service->origin()},
            {"json", "true"}};
}

Response DemoFixture::postCallback(HttpsClient& client, const nlohmann::json& assertion) {
    return client.postForm(callbackPath, callbackForm(client, assertion),
                           {{"X-Auth-Return-Redirect", "true"}});
}

Response DemoFixture::signInWithPasskey(HttpsClient& client,
                                        const fakes::SoftwarePasskey& registered) {
    return postCallback(client, registered.assertion(assertionChallenge(client)));
}

} // namespace kelo::demo
