#pragma once

#include "platform/Bytes.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>

namespace kelo::demo {

/// A credential as clients send it after signing in.
struct AssertionMessage {
    platform::Bytes credentialId;
    platform::Bytes clientData;
    platform::Bytes authenticatorData;
    platform::Bytes signature;
    platform::Bytes userHandle;
};

/// A credential as clients send it after making one.
struct AttestationMessage {
    platform::Bytes credentialId;
    platform::Bytes clientData;
    platform::Bytes attestationObject;
};

/// Nothing when a member is missing, of another type or not base64url, when "id" and "rawId"
/// differ, or when it is not a public-key credential. Other members are left alone.
std::optional<AssertionMessage> parseAssertion(const nlohmann::json& credential);
std::optional<AttestationMessage> parseAttestation(const nlohmann::json& credential);

} // namespace kelo::demo
