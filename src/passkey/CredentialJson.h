#pragma once

#include "base/Bytes.h"
#include "service/JsonReply.h"

namespace kelo::passkey {

/// A platform credential as the service takes it: what all have in common, around the part that its
/// ceremony gives it.
nlohmann::json credentialJson(ByteView credentialId, nlohmann::json response);

} // namespace kelo::passkey
