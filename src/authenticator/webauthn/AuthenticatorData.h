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

/// What the authenticator reports about a ceremony, and signs in an assertion.
struct AuthenticatorData {
    /// SHA-256 of the relying-party identifier.
    std::array<std::uint8_t, 32> relyingPartyHash{};
    /// Without flag::attestedCredentialData: encode() sets it if there is an attestedCredential.
    std::uint8_t flags = 0;
    /// Always 0, which means "no counter". With a counter, a passkey restored from a backup would
    /// look like a clone.
    std::uint32_t signatureCount = 0;
    /// Only in a registration.
    std::optional<AttestedCredentialData> attestedCredential;
};

Bytes encode(const AuthenticatorData& data);

/// The attestation object of a registration, in the format "none": this authenticator attests
/// nothing about the hardware it runs on.
Bytes attestationObject(const AuthenticatorData& data);

} // namespace kelo::webauthn
