#pragma once

#include "passkey/JsonReply.h"
#include "platform/Bytes.h"

namespace kelo {

/// A platform credential as the service takes it: what all have in common, around the part that its
/// ceremony gives it.
nlohmann::json credentialJson(platform::ByteView credentialId, nlohmann::json response);

} // namespace kelo
