#pragma once

#include "base/Bytes.h"

#include <nlohmann/json.hpp>
#include <openssl/evp.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kelo::fakes {

/// An authenticator and client in one object: a P-256 key in memory that makes the credentials
/// clients send. Shares no code with the authenticator or the service. To misbehave in one respect,
/// change one public field.
class SoftwarePasskey {
public:
    /// A new key and a random credential id of 32 bytes.
    explicit SoftwarePasskey(std::string origin);

    std::string origin;
    std::string relyingParty = "localhost";
    std::string registrationType = "webauthn.create";
    std::string assertionType = "webauthn.get";
    bool crossOrigin = false;
    std::string extraClientData; ///< further members, for instance ,"a":1
    std::uint8_t registrationFlags = 0x45;
    std::uint8_t assertionFlags = 0x05;
    std::uint32_t counter = 0;
    Bytes aaguid = Bytes(16, 0);
    Bytes credentialId;
    Bytes userHandle;
    Bytes publicKey; ///< COSE, 77 bytes
    std::string format = "none";
    Bytes statement = {0xa0}; ///< CBOR

    /// The credential after registering, and after signing in, as clients send them.
    nlohmann::json attestation(ByteView challenge) const;
    nlohmann::json assertion(ByteView challenge) const;

    std::string clientData(std::string_view type, ByteView challenge) const;
    Bytes authenticatorData(std::uint8_t flags) const;
    Bytes attestationObject() const;

    /// ECDSA over SHA-256 of the authenticator data and the hash of the client data, DER.
    Bytes sign(ByteView authenticatorData, std::string_view clientData) const;

    static std::string base64Url(ByteView bytes);
    static std::string base64Url(std::string_view text);
    static Bytes fromBase64Url(std::string_view text);

private:
    struct KeyRelease {
        void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    };
    std::unique_ptr<EVP_PKEY, KeyRelease> key;
};

} // namespace kelo::fakes
