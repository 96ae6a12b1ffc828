#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelo {

/// Unpadded base64url (RFC 4648 section 5): how every binary value goes to the service.
std::string base64URLEncode(ByteView bytes);

/// Reads base64url or base64, padded or not: the service may send any of them. Empty for a
/// character outside the alphabets (white space included) or an impossible length.
std::optional<Bytes> base64URLDecode(std::string_view text);

} // namespace kelo
