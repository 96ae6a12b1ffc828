#pragma once

#include "authenticator/keys/P256Key.h"
#include "authenticator/keys/SecretBytes.h"
#include "base/Bytes.h"

#include <variant>

namespace kelo::authenticator {

/// Why a private key cannot be unwrapped.
enum class UnwrapFailure {
    otherWrappingKey, ///< it was wrapped with another wrapping key
    damaged,          ///< the bytes have changed
};

/// Encrypts a private key with AES-256-GCM and a 32-byte wrapping key. The additional authenticated
/// data is a format version, a key check value of the wrapping key, and the public key. The public
/// key prevents that one passkey's private key is used for another. Throws a Failure of kind
/// cryptography.
Bytes wrapPrivateKey(const SecretBytes& wrappingKey, const P256Key& key);

/// Decrypts what wrapPrivateKey() returned. Throws a Failure of kind cryptography.
std::variant<P256Key, UnwrapFailure> unwrapPrivateKey(const SecretBytes& wrappingKey,
                                                      ByteView wrapped);

} // namespace kelo::authenticator
