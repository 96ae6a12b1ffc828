#pragma once

#include "base/Bytes.h"

#include <string_view>

namespace kelo::demo {

Bytes sha256(ByteView bytes);
Bytes sha256(std::string_view text);

Bytes hmacSha256(ByteView key, std::string_view message);

/// Compares in constant time: the duration does not reveal where two texts differ.
bool equalInConstantTime(std::string_view left, std::string_view right);

} // namespace kelo::demo
