#pragma once

#include "DemoProcess.h"
#include "HttpsClient.h"
#include "fakes/SoftwarePasskey.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelo::demo {

inline constexpr const char* sessionCookie = "__Secure-kelo.session-token";
inline constexpr const char* csrfCookie = "__Host-kelo.csrf-token";
inline constexpr const char* adaPassword = "analytical engine";

/// The real service, a browser, and the steps of the two ceremonies. One authority for all tests:
/// making it is tested elsewhere.
class DemoFixture : public testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    static std::filesystem::path authority();

    void SetUp() override { startService(); }
    void startService(const std::vector<std::string>& more = {});

    Response signInWithPassword(HttpsClient& client, const std::string& email = "ada@example.org",
                                const std::string& password = adaPassword);

    /// The challenge of fresh creation options, and the account's handle put into the passkey.
    Bytes creationChallenge(HttpsClient& client, fakes::SoftwarePasskey& passkey);
    Response postRegistration(HttpsClient& client, const nlohmann::json& body);
    nlohmann::json registrationBody(const nlohmann::json& attestation,
                                    const std::string& passwordOrCode = adaPassword);
    /// The whole registration.
    Response registerPasskey(HttpsClient& client, fakes::SoftwarePasskey& passkey,
                             const std::string& passwordOrCode = adaPassword);

    Bytes assertionChallenge(HttpsClient& client);
    std::map<std::string, std::string> callbackForm(HttpsClient& client,
                                                    const nlohmann::json& assertion);
    Response postCallback(HttpsClient& client, const nlohmann::json& assertion);
    /// The whole sign-in.
    Response signInWithPasskey(HttpsClient& client, const fakes::SoftwarePasskey& passkey);

    std::unique_ptr<DemoProcess> service;
    std::unique_ptr<HttpsClient> browser;
    std::unique_ptr<fakes::SoftwarePasskey> passkey;
};

} // namespace kelo::demo
