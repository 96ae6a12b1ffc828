#pragma once

#include "authenticator/keys/OpenSslPointer.h"
#include "authenticator/keys/SecretBytes.h"
#include "authenticator/webauthn/AttestedCredentialData.h"
#include "base/Bytes.h"

#include <openssl/evp.h>

#include <optional>
#include <utility>

namespace kelo::authenticator {

/// An ES256 key pair in memory, which OpenSSL overwrites on destruction. Throws a Failure of kind
/// cryptography.
class P256Key {
public:
    static P256Key generate();
    /// The key pair of a private scalar (32 bytes, big-endian). Nothing if the scalar is not valid
    /// for this curve.
    static std::optional<P256Key> fromScalar(const SecretBytes& scalar);

    webauthn::PublicKey publicKey() const;
    SecretBytes scalar() const;
    /// Signs a 32-byte SHA-256 digest; the signature is a DER Ecdsa-Sig-Value.
    Bytes sign(ByteView digest) const;

private:
    using Handle = OpenSslPointer<EVP_PKEY, EVP_PKEY_free>;

    explicit P256Key(Handle key) : key(std::move(key)) {}

    Handle key;
};

} // namespace kelo::authenticator
