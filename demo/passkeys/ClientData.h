#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// The parsed clientDataJSON, used to find the ceremony and to explain errors. Only
/// isClientDataFor() verifies the bytes.
struct ClientData {
    std::string type;
    Bytes challenge;
    std::string origin;
    bool crossOrigin = false;
};

/// Empty if the bytes are no JSON object with these members.
std::optional<ClientData> parseClientData(ByteView bytes);

/// The limited verification of WebAuthn Level 3: compares bytes, because a parser may read the same
/// text in more than one way. Only a page of the origin itself, in no frame of another, passes.
bool isClientDataFor(ByteView bytes, std::string_view type, ByteView challenge,
                     std::string_view origin);

} // namespace kelo::demo
