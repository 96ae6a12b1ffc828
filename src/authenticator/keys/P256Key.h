#pragma once

#include "authenticator/keys/KeyStore.h"
#include "authenticator/keys/SecretBytes.h"
#include "base/Bytes.h"

#include <openssl/evp.h>

#include <memory>
#include <optional>

namespace kelo::authenticator {

/// An ES256 key pair in memory. The library overwrites its memory when it goes.
class P256Key {
public:
    static P256Key generate();
    /// The pair of a 32-byte big-endian private scalar; nothing when it is not one of this curve.
    static std::optional<P256Key> fromScalar(const SecretBytes& scalar);

    webauthn::PublicKey publicKey() const;
    SecretBytes scalar() const;
    /// Signs a 32-byte SHA-256 digest; the signature is a DER Ecdsa-Sig-Value.
    Bytes sign(ByteView digest) const;

private:
    struct Deleter {
        void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    };
    using Handle = std::unique_ptr<EVP_PKEY, Deleter>;

    explicit P256Key(Handle key) : key(std::move(key)) {}

    Handle key;
};

} // namespace kelo::authenticator
