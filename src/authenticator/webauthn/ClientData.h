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
    /// Only for a ceremony in a frame of another origin.
    std::optional<std::string> topOrigin;
    /// Further members as they stand between the braces, without a leading comma; empty for none.
    std::string furtherMembers;
};

/// The bytes that are hashed and sent: the standard's fixed template, because a verifier may
/// compare text instead of parsing it. A JSON library is free to order members and to escape "/",
/// so none is used. All texts must be well-formed UTF-8.
std::string clientDataJson(const ClientData& clientData);

} // namespace kelo::webauthn
