#include "unit/authenticator/IndependentVerifier.h"

#include "authenticator/keys/Cryptography.h"

#include <cbor.h>
#include <fido.h>
#include <fido/es256.h>

#include <cstring>
#include <memory>

namespace kelo {

namespace {

struct Release {
    void operator()(cbor_item_t* item) const { cbor_decref(&item); }
    void operator()(fido_cred_t* credential) const { fido_cred_free(&credential); }
    void operator()(fido_assert_t* assertion) const { fido_assert_free(&assertion); }
    void operator()(es256_pk_t* key) const { es256_pk_free(&key); }
};
using CborItem = std::unique_ptr<cbor_item_t, Release>;
using Credential = std::unique_ptr<fido_cred_t, Release>;
using Assertion = std::unique_ptr<fido_assert_t, Release>;
using Key = std::unique_ptr<es256_pk_t, Release>;

bool isText(const cbor_item_t* item, const char* text) {
    return cbor_isa_string(item) && cbor_string_length(item) == std::strlen(text) &&
           std::memcmp(cbor_string_handle(item), text, std::strlen(text)) == 0;
}

/// The authenticator data of an attestation object of format "none".
std::optional<Bytes> authenticatorData(const Bytes& attestationObject) {
    cbor_load_result result{};
    const CborItem item(cbor_load(attestationObject.data(), attestationObject.size(), &result));
    if (!item || result.read != attestationObject.size() || !cbor_isa_map(item.get()) ||
        cbor_map_size(item.get()) != 3)
        return std::nullopt;
    const cbor_pair* pairs = cbor_map_handle(item.get());
    if (!isText(pairs[0].key, "fmt") || !isText(pairs[0].value, "none") ||
        !isText(pairs[1].key, "attStmt") || !cbor_isa_map(pairs[1].value) ||
        cbor_map_size(pairs[1].value) != 0 || !isText(pairs[2].key, "authData") ||
        !cbor_isa_bytestring(pairs[2].value))
        return std::nullopt;
    const unsigned char* data = cbor_bytestring_handle(pairs[2].value);
    return Bytes(data, data + cbor_bytestring_length(pairs[2].value));
}

} // namespace

std::optional<VerifiedRegistration>
verifyRegistration(const platform::PlatformRegistrationCredential& credential,
                   const std::string& relyingParty) {
    if (!credential.rawAttestationObject)
        return std::nullopt;
    const auto data = authenticatorData(*credential.rawAttestationObject);
    const auto hash = authenticator::sha256(credential.rawClientDataJson);
    const Credential read(fido_cred_new());
    // Setting the data parses it and compares the relying party's hash.
    if (!data || fido_cred_set_type(read.get(), COSE_ES256) != FIDO_OK ||
        fido_cred_set_rp(read.get(), relyingParty.c_str(), nullptr) != FIDO_OK ||
        fido_cred_set_clientdata_hash(read.get(), hash.data(), hash.size()) != FIDO_OK ||
        fido_cred_set_authdata_raw(read.get(), data->data(), data->size()) != FIDO_OK)
        return std::nullopt;
    const auto expected = authenticator::sha256(relyingParty);
    if (!std::equal(expected.begin(), expected.end(), data->begin()))
        return std::nullopt;
    const auto bytes = [](const unsigned char* start, std::size_t size) {
        return Bytes(start, start + size);
    };
    VerifiedRegistration verified;
    verified.credentialId = bytes(fido_cred_id_ptr(read.get()), fido_cred_id_len(read.get()));
    verified.publicKey = bytes(fido_cred_pubkey_ptr(read.get()), fido_cred_pubkey_len(read.get()));
    verified.aaguid = bytes(fido_cred_aaguid_ptr(read.get()), fido_cred_aaguid_len(read.get()));
    verified.flags = fido_cred_flags(read.get());
    verified.counter = fido_cred_sigcount(read.get());
    return verified;
}

bool verifyAssertion(const platform::PlatformAssertionCredential& credential,
                     const Bytes& publicKey, const std::string& relyingParty, bool userVerified) {
    const auto hash = authenticator::sha256(credential.rawClientDataJson);
    const Assertion assertion(fido_assert_new());
    const Key key(es256_pk_new());
    const Bytes& data = *credential.rawAuthenticatorData;
    const Bytes& signature = *credential.signature;
    return es256_pk_from_ptr(key.get(), publicKey.data(), publicKey.size()) == FIDO_OK &&
           fido_assert_set_rp(assertion.get(), relyingParty.c_str()) == FIDO_OK &&
           fido_assert_set_clientdata_hash(assertion.get(), hash.data(), hash.size()) == FIDO_OK &&
           fido_assert_set_count(assertion.get(), 1) == FIDO_OK &&
           fido_assert_set_authdata_raw(assertion.get(), 0, data.data(), data.size()) == FIDO_OK &&
           fido_assert_set_sig(assertion.get(), 0, signature.data(), signature.size()) == FIDO_OK &&
           fido_assert_set_up(assertion.get(), FIDO_OPT_TRUE) == FIDO_OK &&
           fido_assert_set_uv(assertion.get(), userVerified ? FIDO_OPT_TRUE : FIDO_OPT_OMIT) ==
               FIDO_OK &&
           fido_assert_verify(assertion.get(), 0, COSE_ES256, key.get()) == FIDO_OK;
}

} // namespace kelo
