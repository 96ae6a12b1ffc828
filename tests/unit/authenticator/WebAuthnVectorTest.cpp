#include "DeterministicSigner.h"
#include "Hex.h"

#include "authenticator/keys/P256Key.h"
#include "authenticator/webauthn/AuthenticatorData.h"
#include "authenticator/webauthn/ClientData.h"

#include <gtest/gtest.h>

#include <algorithm>

// The published test vector "None attestation with ES256" of Web Authentication Level 3, byte for
// byte: relying party example.org, origin https://example.org.

namespace kelo {

namespace {

using namespace authenticator;

constexpr std::string_view relyingParty = "example.org";
constexpr std::string_view origin = "https://example.org";
constexpr std::string_view privateKey =
    "6e68e7a58484a3264f66b77f5d6dc5bc36a47085b615c9727ab334e8c369c2ee";
constexpr std::string_view aaguid = "8446ccb9ab1db374750b2367ff6f3a1f";
constexpr std::string_view credentialId =
    "f91f391db4c9b2fde0ea70189cba3fb63f579ba6122b33ad94ff3ec330084be4";
constexpr std::string_view creationChallenge =
    "00c30fb78531c464d2b6771dab8d7b603c01162f2fa486bea70f283ae556e130";
constexpr std::string_view creationClientData =
    "7b2274797065223a22776562617574686e2e637265617465222c226368616c6c656e6765223a22414d4d"
    "507434557878475453746e63647134313759447742466938767049612d7077386f4f755657345441222c"
    "226f726967696e223a2268747470733a2f2f6578616d706c652e6f7267222c2263726f73734f72696769"
    "6e223a66616c73652c22657874726144617461223a22636c69656e74446174614a534f4e206d61792062"
    "6520657874656e6465642077697468206164646974696f6e616c206669656c647320696e207468652066"
    "75747572652c207375636820617320746869733a20426b5165446a646354427258426941774a544c4535"
    "51227d";
constexpr std::string_view creationObject =
    "a363666d74646e6f6e656761747453746d74a068617574684461746158a4bfabc37432958b063360d3ad"
    "6461c9c4735ae7f8edd46592a5e0f01452b2e4b559000000008446ccb9ab1db374750b2367ff6f3a1f00"
    "20f91f391db4c9b2fde0ea70189cba3fb63f579ba6122b33ad94ff3ec330084be4a50102032620012158"
    "20afefa16f97ca9b2d23eb86ccb64098d20db90856062eb249c33a9b672f26df61225820930a56b87a2f"
    "ca66334b03458abf879717c12cc68ed73290af2e2664796b9220";
constexpr std::string_view assertionChallenge =
    "39c0e7521417ba54d43e8dc95174f423dee9bf3cd804ff6d65c857c9abf4d408";
constexpr std::string_view assertionClientData =
    "7b2274797065223a22776562617574686e2e676574222c226368616c6c656e6765223a224f63446e5568"
    "5158756c5455506f334a5558543049393770767a7a59425039745a63685879617630314167222c226f72"
    "6967696e223a2268747470733a2f2f6578616d706c652e6f7267222c2263726f73734f726967696e223a"
    "66616c73657d";
constexpr std::string_view assertionData =
    "bfabc37432958b063360d3ad6461c9c4735ae7f8edd46592a5e0f01452b2e4b51900000000";
constexpr std::string_view assertionSignature =
    "3046022100f50a4e2e4409249c4a853ba361282f09841df4dd4547a13a87780218deffcd380221008480"
    "ac0f0b93538174f575bf11a1dd5d78c6e486013f937295ea13653e331e87";

authenticator::P256Key publishedKey() {
    auto key = authenticator::P256Key::fromScalar(authenticator::SecretBytes(fromHex(privateKey)));
    EXPECT_TRUE(key.has_value());
    return std::move(*key);
}

std::string clientDataHex(std::string_view type, std::string_view challenge, std::string further) {
    webauthn::ClientData data;
    data.type = type;
    data.challenge = fromHex(challenge);
    data.origin = origin;
    data.furtherMembers = std::move(further);
    return toHex(bytesOf(webauthn::clientDataJson(data)));
}

} // namespace

TEST(WebAuthnVector, ClientDataOfTheRegistration) {
    // The vector carries a further member, as a reminder that verifiers must accept some.
    const std::string whole = textOf(fromHex(creationClientData));
    const std::size_t start = whole.find("\"extraData\"");
    ASSERT_NE(start, std::string::npos);
    const std::string further = whole.substr(start, whole.size() - 1 - start);
    EXPECT_EQ(clientDataHex("webauthn.create", creationChallenge, further), creationClientData);
}

TEST(WebAuthnVector, ClientDataOfTheAssertion) {
    EXPECT_EQ(clientDataHex("webauthn.get", assertionChallenge, ""), assertionClientData);
}

TEST(WebAuthnVector, AttestationObject) {
    webauthn::AuthenticatorData data;
    data.relyingPartyHash = authenticator::sha256(relyingParty);
    data.flags =
        webauthn::flag::userPresent | webauthn::flag::backupEligible | webauthn::flag::backedUp;
    data.attestedCredential.emplace();
    std::ranges::copy(fromHex(aaguid), data.attestedCredential->aaguid.begin());
    data.attestedCredential->credentialId = fromHex(credentialId);
    data.attestedCredential->publicKey = publishedKey().publicKey();
    EXPECT_EQ(toHex(attestationObject(data)), creationObject);
}

TEST(WebAuthnVector, AuthenticatorDataAndSignatureOfTheAssertion) {
    webauthn::AuthenticatorData data;
    data.relyingPartyHash = authenticator::sha256(relyingParty);
    data.flags =
        webauthn::flag::userPresent | webauthn::flag::backupEligible | webauthn::flag::backedUp;
    Bytes message = encode(data);
    EXPECT_EQ(toHex(message), assertionData);
    const authenticator::Sha256Digest clientDataHash =
        authenticator::sha256(fromHex(assertionClientData));
    message.insert(message.end(), clientDataHash.begin(), clientDataHash.end());
    EXPECT_EQ(toHex(signDeterministically(fromHex(privateKey), authenticator::sha256(message))),
              assertionSignature);
}

TEST(DeterministicSigner, FollowsTheExampleOfItsStandard) {
    // RFC 6979, A.2.5, SHA-256 of "sample".
    const auto key = fromHex("c9afa9d845ba75166b5c215767b1d6934e50c3db36e89b127b8a622b120f6721");
    EXPECT_EQ(toHex(signDeterministically(key, authenticator::sha256(std::string_view("sample")))),
              "3046022100efd48b2aacb6a8fd1140dd9cd45e81d69d2c877b56aaf991c34d0ea84eaf3716"
              "022100f7cb1c942d657c41d436c7a1b6e29f65f3e900dbb9aff4064dc4ab2f843acda8");
}

} // namespace kelo
