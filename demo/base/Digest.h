#pragma once

#include "base/Bytes.h"

#include <string_view>

namespace kelo::demo {

Bytes sha256(ByteView bytes);
Bytes sha256(std::string_view text);

Bytes hmacSha256(ByteView key, std::string_view message);

/// Compares without telling, by the time it takes, where two texts begin to differ.
bool equalInConstantTime(std::string_view left, std::string_view right);

} // namespace kelo::demo
