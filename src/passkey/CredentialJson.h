#pragma once

#include "base/Bytes.h"
#include "service/JsonReply.h"

namespace kelo::passkey {

/// A platform credential in the service's JSON format: the members that both ceremonies share, with
/// the response of the one at hand.
nlohmann::json credentialJson(ByteView credentialId, nlohmann::json response);

} // namespace kelo::passkey
