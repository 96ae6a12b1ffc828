#pragma once

#include "authenticator/webauthn/AttestedCredentialData.h"
#include "base/Bytes.h"

#include <array>
#include <cstdint>
#include <optional>

namespace kelo::webauthn {

/// The bits of the flags byte.
namespace flag {
inline constexpr std::uint8_t userPresent = 0x01;
inline constexpr std::uint8_t userVerified = 0x04;
inline constexpr std::uint8_t backupEligible = 0x08;
inline constexpr std::uint8_t backedUp = 0x10;
inline constexpr std::uint8_t attestedCredentialData = 0x40;
} // namespace flag

/// What the authenticator says, and signs, about a ceremony.
struct AuthenticatorData {
    /// SHA-256 of the relying-party identifier.
    std::array<std::uint8_t, 32> relyingPartyHash{};
    /// Without flag::attestedCredentialData, which follows from the member below.
    std::uint8_t flags = 0;
    /// Constant 0: a counter would only make a restored backup of the records look like a clone.
    std::uint32_t signatureCount = 0;
    /// Present in a registration, and only there.
    std::optional<AttestedCredentialData> attestedCredential;
};

Bytes encode(const AuthenticatorData& data);

} // namespace kelo::webauthn
