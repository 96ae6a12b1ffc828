#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelo {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

inline Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

inline std::string textOf(ByteView bytes) {
    return std::string(bytes.begin(), bytes.end());
}

} // namespace kelo
