#pragma once

#include "authenticator/keys/KeyStore.h"
#include "authenticator/keys/P256Key.h"
#include "authenticator/keys/SecretBytes.h"
#include "base/Bytes.h"

#include <cstddef>
#include <variant>

namespace kelo::authenticator {

inline constexpr std::size_t wrappingKeySize = 32;

/// Why a wrapped key does not open.
enum class UnwrapFailure {
    otherWrappingKey, ///< it was made under another wrapping key
    damaged,          ///< the bytes are not what was written
};

/// Encrypts a private key with AES-256-GCM under a 32-byte wrapping key. The result also carries,
/// in the clear but authenticated: the version of the form, which wrapping key it was, and the
/// public key, so that one passkey's private key cannot be passed off as another's.
Bytes wrapPrivateKey(const SecretBytes& wrappingKey, const P256Key& key);

std::variant<P256Key, UnwrapFailure> unwrapPrivateKey(const SecretBytes& wrappingKey,
                                                      ByteView wrapped);

} // namespace kelo::authenticator
