#include "demo/passkeys/PasskeyVerifier.h"

#include "demo/base/Digest.h"
#include "demo/passkeys/AttestationObject.h"
#include "demo/passkeys/ClientData.h"

#include <fido.h>
#include <fido/es256.h>
#include <openssl/evp.h>

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

namespace kelo::demo {
namespace {

constexpr std::size_t hashSize = 32;
constexpr std::size_t smallestAuthenticatorData = 37;
constexpr std::size_t coseKeySize = 77;

enum Flag : std::uint8_t {
    userPresent = 0x01,
    userVerified = 0x04,
    backupEligible = 0x08,
    backedUp = 0x10,
    attestedData = 0x40,
    extensionData = 0x80,
};

template <typename T, void (*release)(T**)>
struct FidoRelease {
    void operator()(T* object) const { release(&object); }
};
using Assertion = std::unique_ptr<fido_assert_t, FidoRelease<fido_assert_t, fido_assert_free>>;
using Credential = std::unique_ptr<fido_cred_t, FidoRelease<fido_cred_t, fido_cred_free>>;
using PublicKey = std::unique_ptr<es256_pk_t, FidoRelease<es256_pk_t, es256_pk_free>>;

struct KeyRelease {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

std::uint8_t flagsOf(ByteView authenticatorData) {
    return authenticatorData[hashSize];
}

void demand(bool fulfilled, const char* otherwise) {
    if (!fulfilled)
        throw PasskeyRefused(otherwise);
}

PublicKey publicKeyFrom(ByteView coordinates) {
    PublicKey key(es256_pk_new());
    demand(key && es256_pk_from_ptr(key.get(), coordinates.data(), coordinates.size()) == FIDO_OK,
           "The public key is not an ES256 key");
    // Conversion to OpenSSL's form fails for a point that does not lie on the curve.
    const std::unique_ptr<EVP_PKEY, KeyRelease> onCurve(es256_pk_to_EVP_PKEY(key.get()));
    demand(onCurve != nullptr, "The public key is not an ES256 key");
    return key;
}

/// libfido2 reads what it needs and is lenient about the rest; without extensions the size is
/// known.
void checkSize(ByteView authenticatorData, std::size_t credentialIdSize) {
    const std::size_t expected =
        smallestAuthenticatorData + 16 + 2 + credentialIdSize + coseKeySize;
    const bool extended = (flagsOf(authenticatorData) & extensionData) != 0;
    demand(extended || authenticatorData.size() == expected,
           "The authenticator data has the wrong size");
}

} // namespace

PasskeyVerifier::PasskeyVerifier(std::string relyingParty, std::string origin)
    : relyingParty(std::move(relyingParty)), origin(std::move(origin)) {
    fido_init(0);
}

void PasskeyVerifier::checkClientData(ByteView bytes, const char* type, ByteView challenge) const {
    const auto data = parseClientData(bytes);
    demand(data.has_value(), "The client data is malformed");
    demand(data->type == type, "The client data is for another ceremony");
    demand(data->origin == origin, "The passkey was used on another site");
    demand(!data->crossOrigin, "The passkey was used inside another site");
    demand(isClientDataFor(bytes, type, challenge, origin), "The client data is malformed");
}

void PasskeyVerifier::checkAuthenticatorData(ByteView bytes) const {
    demand(bytes.size() >= smallestAuthenticatorData, "The authenticator data is too short");
    demand(std::ranges::equal(bytes.first(hashSize), sha256(relyingParty)),
           "The passkey belongs to another service");
    const auto flags = flagsOf(bytes);
    demand((flags & userPresent) != 0, "The user was not present");
    demand((flags & userVerified) != 0, "The user was not verified");
    demand((flags & backedUp) == 0 || (flags & backupEligible) != 0,
           "The passkey says it is backed up and cannot be");
}

Passkey PasskeyVerifier::verifyRegistration(const AttestationMessage& message,
                                            ByteView challenge) const {
    checkClientData(message.clientData, "webauthn.create", challenge);
    const auto data = authenticatorDataOf(message.attestationObject);
    checkAuthenticatorData(data);
    demand((flagsOf(data) & attestedData) != 0, "The authenticator data holds no new passkey");

    const Credential credential(fido_cred_new());
    demand(credential && fido_cred_set_type(credential.get(), COSE_ES256) == FIDO_OK &&
               fido_cred_set_authdata_raw(credential.get(), data.data(), data.size()) == FIDO_OK,
           "The public key is not an ES256 key");
    const std::span aaguid(fido_cred_aaguid_ptr(credential.get()),
                           fido_cred_aaguid_len(credential.get()));
    demand(std::ranges::all_of(aaguid, [](unsigned char byte) { return byte == 0; }),
           "The authenticator names its model although nothing vouches for it");
    const std::span identifier(fido_cred_id_ptr(credential.get()),
                               fido_cred_id_len(credential.get()));
    demand(std::ranges::equal(identifier, message.credentialId), "The credential ids do not match");
    checkSize(data, identifier.size());
    const std::span key(fido_cred_pubkey_ptr(credential.get()),
                        fido_cred_pubkey_len(credential.get()));
    publicKeyFrom(key);

    Passkey passkey;
    passkey.credentialId.assign(identifier.begin(), identifier.end());
    passkey.publicKey.assign(key.begin(), key.end());
    passkey.counter = fido_cred_sigcount(credential.get());
    passkey.backupEligible = (flagsOf(data) & backupEligible) != 0;
    return passkey;
}

std::uint32_t PasskeyVerifier::verifyAssertion(const AssertionMessage& message, ByteView challenge,
                                               const Passkey& passkey) const {
    checkClientData(message.clientData, "webauthn.get", challenge);
    const auto& data = message.authenticatorData;
    checkAuthenticatorData(data);
    const auto flags = flagsOf(data);
    demand((flags & attestedData) == 0, "The authenticator data holds a new passkey");
    demand(((flags & backupEligible) != 0) == passkey.backupEligible,
           "The passkey changed whether it can be backed up");
    demand((flags & extensionData) != 0 || data.size() == smallestAuthenticatorData,
           "The authenticator data has the wrong size");

    const auto key = publicKeyFrom(passkey.publicKey);
    const auto hash = sha256(message.clientData);
    const Assertion assertion(fido_assert_new());
    const auto set = [](int result) { return result == FIDO_OK; };
    const bool complete =
        assertion && set(fido_assert_set_count(assertion.get(), 1)) &&
        set(fido_assert_set_rp(assertion.get(), relyingParty.c_str())) &&
        set(fido_assert_set_clientdata_hash(assertion.get(), hash.data(), hash.size())) &&
        set(fido_assert_set_up(assertion.get(), FIDO_OPT_TRUE)) &&
        set(fido_assert_set_uv(assertion.get(), FIDO_OPT_TRUE)) &&
        set(fido_assert_set_authdata_raw(assertion.get(), 0, data.data(), data.size())) &&
        set(fido_assert_set_sig(assertion.get(), 0, message.signature.data(),
                                message.signature.size()));
    demand(complete, "The authenticator data is malformed");
    demand(set(fido_assert_verify(assertion.get(), 0, COSE_ES256, key.get())),
           "The signature does not match");

    const auto counter = fido_assert_sigcount(assertion.get(), 0);
    demand((counter == 0 && passkey.counter == 0) || counter > passkey.counter,
           "The passkey's counter went backwards, it may have been copied");
    return counter;
}

} // namespace kelo::demo
