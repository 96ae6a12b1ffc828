#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// Base64url without padding, as WebAuthn writes binary values.
std::string base64UrlEncode(ByteView bytes);

/// Strict: padding, white space, the other base64 alphabet and stray bits in the last character
/// make it nothing, so that every value has one spelling only.
std::optional<Bytes> base64UrlDecode(std::string_view text);

} // namespace kelo::demo
