#pragma once

#include "platform/Bytes.h"

#include <string_view>

namespace kelo::demo {

platform::Bytes sha256(platform::ByteView bytes);
platform::Bytes sha256(std::string_view text);

platform::Bytes hmacSha256(platform::ByteView key, std::string_view message);

/// Compares without telling, by the time it takes, where two texts begin to differ.
bool equalInConstantTime(std::string_view left, std::string_view right);

} // namespace kelo::demo
