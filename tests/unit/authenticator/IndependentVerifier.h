#pragma once

#include "base/Bytes.h"
#include "platform/Authorization.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelo {

/// What an independent library (libfido2) reads from a registration.
struct VerifiedRegistration {
    Bytes credentialId;
    Bytes publicKey;
    Bytes aaguid;
    std::uint8_t flags = 0;
    std::uint32_t counter = 0;
};

/// Empty if the library does not accept the attestation object for this relying party.
std::optional<VerifiedRegistration>
verifyRegistration(const platform::PlatformRegistrationCredential& credential,
                   const std::string& relyingParty);

/// Whether the library accepts the assertion under the public key of a registration.
bool verifyAssertion(const platform::PlatformAssertionCredential& credential,
                     const Bytes& publicKey, const std::string& relyingParty, bool userVerified);

} // namespace kelo
