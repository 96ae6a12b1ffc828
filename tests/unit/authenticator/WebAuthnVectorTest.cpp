#include "DeterministicSigner.h"
#include "Hex.h"
#include "IndependentVerifier.h"
#include "PublishedVectors.h"

#include "authenticator/GetAssertion.h"
#include "authenticator/MakeCredential.h"
#include "authenticator/keys/P256Key.h"
#include "authenticator/webauthn/AuthenticatorData.h"
#include "authenticator/webauthn/ClientData.h"
#include "fakes/authenticator/ScopedAuthenticator.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelo {

namespace {

using namespace authenticator;

constexpr std::string_view relyingParty = "example.org";
constexpr std::string_view origin = "https://example.org";

/// The members after those of the template, as a reminder that verifiers must accept some.
std::string furtherMembers(const std::string& clientData) {
    const std::size_t start = clientData.find("\"extraData\"");
    return start == std::string::npos ? ""
                                      : clientData.substr(start, clientData.size() - 1 - start);
}

/// What is left of the client data without what this authenticator never sends: it has no frames of
/// other origins, and no members beyond the template.
std::string asWeSendIt(const PublishedVector& vector, std::string clientData) {
    const auto drop = [&](const std::string& part) {
        if (const std::size_t at = clientData.find(part); at != std::string::npos)
            clientData.erase(at, part.size());
    };
    if (const std::string further = furtherMembers(clientData); !further.empty())
        drop("," + further);
    drop(",\"topOrigin\":\"" + std::string(vector.topOrigin) + "\"");
    constexpr std::string_view member = "\"crossOrigin\":";
    const std::size_t value = clientData.find(member) + member.size();
    return clientData.replace(value, clientData.find('}', value) - value, "false");
}

class WebAuthnVector : public testing::TestWithParam<PublishedVector> {
protected:
    const PublishedVector& vector = GetParam();

    P256Key key() const {
        auto made = P256Key::fromScalar(SecretBytes(fromHex(vector.privateKey)));
        EXPECT_TRUE(made.has_value());
        return std::move(*made);
    }
    /// The client data as published, from its values.
    std::string clientDataHex(std::string_view type, std::string_view challenge,
                              std::string_view published) const {
        webauthn::ClientData data;
        data.type = type;
        data.challenge = fromHex(challenge);
        data.origin = origin;
        data.crossOrigin = vector.crossOrigin;
        if (!vector.topOrigin.empty())
            data.topOrigin = vector.topOrigin;
        data.furtherMembers = furtherMembers(textOf(fromHex(published)));
        return toHex(bytesOf(webauthn::clientDataJson(data)));
    }
    static webauthn::AuthenticatorData dataWith(std::uint8_t publishedFlags) {
        webauthn::AuthenticatorData data;
        data.relyingPartyHash = sha256(relyingParty);
        data.flags = publishedFlags & ~webauthn::flag::attestedCredentialData;
        return data;
    }
    platform::PlatformRegistrationCredential publishedRegistration() const {
        platform::PlatformRegistrationCredential credential;
        credential.credentialId = fromHex(vector.credentialId);
        credential.rawClientDataJson = fromHex(vector.creationClientData);
        credential.rawAttestationObject = fromHex(vector.attestationObject);
        return credential;
    }
    static AuthenticatorParts with(const AuthenticatorParts& parts,
                                   std::span<const Association> associations) {
        return {associations,      parts.sheets, parts.verifier, parts.keys,
                parts.credentials, parts.worker, parts.clock};
    }

    fakes::ScopedAuthenticator scope;
    const std::array<Association, 1> associations{
        Association{std::string(relyingParty), std::string(origin)}};
    const AuthenticatorParts parts = with(scope.parts, associations);
};

} // namespace

TEST_P(WebAuthnVector, ClientDataIsWrittenByteForByte) {
    EXPECT_EQ(clientDataHex("webauthn.create", vector.creationChallenge, vector.creationClientData),
              vector.creationClientData);
    EXPECT_EQ(clientDataHex("webauthn.get", vector.assertionChallenge, vector.assertionClientData),
              vector.assertionClientData);
}

TEST_P(WebAuthnVector, AttestationObjectIsWrittenByteForByte) {
    const auto published = verifyRegistration(publishedRegistration(), std::string(relyingParty));
    ASSERT_TRUE(published) << "libfido2 reads the flags";
    auto data = dataWith(published->flags);
    data.attestedCredential.emplace();
    std::ranges::copy(fromHex(vector.aaguid), data.attestedCredential->aaguid.begin());
    data.attestedCredential->credentialId = fromHex(vector.credentialId);
    data.attestedCredential->publicKey = key().publicKey();
    EXPECT_EQ(toHex(attestationObject(data)), vector.attestationObject);
}

TEST_P(WebAuthnVector, AuthenticatorDataAndSignatureAreWrittenByteForByte) {
    constexpr std::size_t flags = 32;
    Bytes message = encode(dataWith(fromHex(vector.authenticatorData).at(flags)));
    EXPECT_EQ(toHex(message), vector.authenticatorData);
    const Sha256Digest clientDataHash = sha256(fromHex(vector.assertionClientData));
    message.insert(message.end(), clientDataHash.begin(), clientDataHash.end());
    EXPECT_EQ(toHex(signDeterministically(fromHex(vector.privateKey), sha256(message))),
              vector.signature);
}

TEST_P(WebAuthnVector, RegistrationSendsTheSameClientDataFromItsOwnOriginOnly) {
    MakeCredential ceremony(
        parts, {std::string(relyingParty), fromHex(vector.creationChallenge), "zoe", {1}}, nullptr);
    const auto ended = scope.run(ceremony.run());
    ASSERT_TRUE(ended->value);
    EXPECT_EQ(textOf(ended->value->rawClientDataJson),
              asWeSendIt(vector, textOf(fromHex(vector.creationClientData))));
    EXPECT_TRUE(verifyRegistration(*ended->value, std::string(relyingParty)));
}

TEST_P(WebAuthnVector, AssertionWithThePublishedKeyIsAcceptedUnderThePublishedRegistration) {
    const auto published = verifyRegistration(publishedRegistration(), std::string(relyingParty));
    ASSERT_TRUE(published);
    CredentialRecord record;
    record.credentialId = fromHex(vector.credentialId);
    record.relyingPartyIdentifier = relyingParty;
    record.userId = {1};
    record.publicKey = key().publicKey();
    record.wrappedPrivateKey = fromHex(vector.privateKey);
    scope.credentials.save(record);

    GetAssertion ceremony(
        parts,
        {std::string(relyingParty), fromHex(vector.assertionChallenge), std::nullopt, std::nullopt},
        nullptr);
    const auto ended = scope.run(ceremony.run());
    ASSERT_TRUE(ended->value) << ended->error->what();
    EXPECT_EQ(ended->value->credentialId, published->credentialId);
    EXPECT_EQ(textOf(ended->value->rawClientDataJson),
              asWeSendIt(vector, textOf(fromHex(vector.assertionClientData))));
    if (vector.crossOrigin) {
        // Those two were made with the flags that this authenticator has: UP and UV.
        EXPECT_EQ(toHex(*ended->value->rawAuthenticatorData), vector.authenticatorData);
    }
    EXPECT_TRUE(
        verifyAssertion(*ended->value, published->publicKey, std::string(relyingParty), true));
}

INSTANTIATE_TEST_SUITE_P(Published, WebAuthnVector,
                         testing::ValuesIn(publishedVectors().begin(), publishedVectors().end()),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(DeterministicSigner, FollowsTheExampleOfItsStandard) {
    // RFC 6979, A.2.5, SHA-256 of "sample".
    const auto key = fromHex("c9afa9d845ba75166b5c215767b1d6934e50c3db36e89b127b8a622b120f6721");
    EXPECT_EQ(toHex(signDeterministically(key, authenticator::sha256(std::string_view("sample")))),
              "3046022100efd48b2aacb6a8fd1140dd9cd45e81d69d2c877b56aaf991c34d0ea84eaf3716"
              "022100f7cb1c942d657c41d436c7a1b6e29f65f3e900dbb9aff4064dc4ab2f843acda8");
}

} // namespace kelo
