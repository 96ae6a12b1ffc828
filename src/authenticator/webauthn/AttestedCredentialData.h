#pragma once

#include "authenticator/KeyStore.h"
#include "platform/Bytes.h"

#include <array>

namespace kelo::authenticator {

/// A new credential inside the authenticator data of a registration.
struct AttestedCredentialData {
    /// The model of the authenticator. All zero here: without attestation it would prove nothing
    /// and only tell users apart.
    std::array<std::uint8_t, 16> aaguid{};
    /// At most 1023 bytes.
    platform::Bytes credentialId;
    PublicKey publicKey;
};

platform::Bytes encode(const AttestedCredentialData& data);

} // namespace kelo::authenticator
