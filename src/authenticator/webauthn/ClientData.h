#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>

namespace kelo::webauthn {

/// The client data of a ceremony (WebAuthn, "Client Data Used in WebAuthn Signatures").
struct ClientData {
    /// "webauthn.create" or "webauthn.get".
    std::string type;
    Bytes challenge;
    /// scheme://host[:port], without a trailing slash.
    std::string origin;
    bool crossOrigin = false;
    /// Only for a ceremony in a cross-origin frame.
    std::optional<std::string> topOrigin;
    /// Additional members as JSON text, without braces or a leading comma. May be empty.
    std::string furtherMembers;
};

/// The JSON text that is hashed and sent. It follows the standard's fixed template exactly, because
/// a verifier may compare text instead of parsing it. A JSON library could order members
/// differently or escape "/", so none is used. All texts must be well-formed UTF-8.
std::string clientDataJson(const ClientData& clientData);

} // namespace kelo::webauthn
