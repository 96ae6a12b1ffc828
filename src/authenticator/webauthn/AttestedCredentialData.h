#pragma once

#include "authenticator/webauthn/CoseKey.h"
#include "base/Bytes.h"

#include <array>

namespace kelo::webauthn {

/// A new credential inside the authenticator data of a registration.
struct AttestedCredentialData {
    /// The model of the authenticator. All zero here: without attestation it would prove nothing
    /// and only tell users apart.
    std::array<std::uint8_t, 16> aaguid{};
    /// At most 1023 bytes.
    Bytes credentialId;
    PublicKey publicKey;
};

Bytes encode(const AttestedCredentialData& data);

} // namespace kelo::webauthn
