#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelo {

/// Standard base64 (RFC 4648 section 4), padded, on one line.
std::string base64Encode(ByteView bytes);

/// Reads standard base64. Strict: accepts only what base64Encode() writes, so that every value has
/// one spelling. Nothing for anything else, white space included.
std::optional<Bytes> base64Decode(std::string_view text);

/// Unpadded base64url (RFC 4648 section 5): how WebAuthn writes binary values.
std::string base64URLEncode(ByteView bytes);

/// Reads base64url or standard base64, padded or not: a service may send any of them. Surplus bits
/// of the last digit are ignored. Nothing for a character outside the alphabets (white space
/// included) or an impossible length.
std::optional<Bytes> base64URLDecode(std::string_view text);

/// Reads base64url. Strict: accepts only what base64URLEncode() writes, so that every value has one
/// spelling. Nothing for anything else, padding included.
std::optional<Bytes> base64URLDecodeStrict(std::string_view text);

} // namespace kelo
