#pragma once

#include "authenticator/keys/SecretBytes.h"
#include "base/Bytes.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace kelo::authenticator {

using Sha256Digest = std::array<std::uint8_t, 32>;

// All of these throw a Failure of kind cryptography.

Sha256Digest sha256(ByteView data);
Sha256Digest sha256(std::string_view text);

/// From OpenSSL's cryptographic random number generator.
Bytes randomBytes(std::size_t count);
void fillRandom(std::uint8_t* memory, std::size_t count);

/// A key for one purpose, of 32 bytes, made from another key: HMAC-SHA-256 of the purpose's name.
SecretBytes derivedKey(const SecretBytes& key, std::string_view purpose);

/// The DER Ecdsa-Sig-Value (RFC 3279, 2.2.3) of its two numbers, which are big-endian.
Bytes ecdsaSignature(ByteView r, ByteView s);

/// Throws a Failure of kind cryptography. OpenSSL fails only when memory runs out or the
/// installation is broken. The operation goes to the log.
[[noreturn]] void cryptographyFailed(std::string_view operation);

} // namespace kelo::authenticator
