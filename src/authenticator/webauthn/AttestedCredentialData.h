#pragma once

#include "base/Bytes.h"

#include <array>
#include <cstdint>

namespace kelo::webauthn {

/// A point on the curve P-256. Both coordinates are big-endian and padded to 32 bytes.
struct PublicKey {
    std::array<std::uint8_t, 32> x{};
    std::array<std::uint8_t, 32> y{};
    friend bool operator==(const PublicKey&, const PublicKey&) = default;
};

/// The COSE_Key of an ES256 public key, with the members kty, alg, crv, x and y only.
Bytes coseKey(const PublicKey& publicKey);

/// A new credential in the authenticator data of a registration.
struct AttestedCredentialData {
    /// The model of the authenticator. All zero: without attestation it proves nothing and only
    /// helps to track users.
    std::array<std::uint8_t, 16> aaguid{};
    /// At most 1023 bytes.
    Bytes credentialId;
    PublicKey publicKey;
};

Bytes encode(const AttestedCredentialData& data);

} // namespace kelo::webauthn
