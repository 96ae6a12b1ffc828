#pragma once

#include "base/Bytes.h"

#include <array>
#include <cstdint>

namespace kelo::webauthn {

/// A P-256 point: both coordinates big-endian, padded to 32 bytes.
struct PublicKey {
    std::array<std::uint8_t, 32> x{};
    std::array<std::uint8_t, 32> y{};
    friend bool operator==(const PublicKey&, const PublicKey&) = default;
};

/// The COSE_Key of an ES256 public key: kty, alg, crv, x and y, and nothing else.
Bytes coseKey(const PublicKey& publicKey);

} // namespace kelo::webauthn
