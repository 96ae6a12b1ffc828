#pragma once

#include "base/Bytes.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>

namespace kelo::demo {

/// A credential as clients send it after signing in.
struct AssertionMessage {
    Bytes credentialId;
    Bytes clientData;
    Bytes authenticatorData;
    Bytes signature;
    Bytes userHandle;
};

/// A credential as clients send it after making one.
struct AttestationMessage {
    Bytes credentialId;
    Bytes clientData;
    Bytes attestationObject;
};

/// Empty if a member is missing, of another type or not base64url, if "id" and "rawId" differ, or
/// if it is no public-key credential. Other members are ignored.
std::optional<AssertionMessage> parseAssertion(const nlohmann::json& credential);
std::optional<AttestationMessage> parseAttestation(const nlohmann::json& credential);

} // namespace kelo::demo
