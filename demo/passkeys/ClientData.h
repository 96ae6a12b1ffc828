#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// What a client says it had signed: the parsed clientDataJSON, for looking up the ceremony and for
/// saying what is wrong. Whether the bytes are right is told by isClientDataFor alone.
struct ClientData {
    std::string type;
    Bytes challenge;
    std::string origin;
    bool crossOrigin = false;
};

/// Nothing when the bytes are not a JSON object with these members.
std::optional<ClientData> parseClientData(ByteView bytes);

/// The limited verification of WebAuthn Level 3: compares bytes, because a parser may read the same
/// text in more than one way. Only a page of the origin itself, in no frame of another, passes.
bool isClientDataFor(ByteView bytes, std::string_view type, ByteView challenge,
                     std::string_view origin);

} // namespace kelo::demo
