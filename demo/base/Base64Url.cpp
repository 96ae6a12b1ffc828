#include "demo/base/Base64Url.h"

#include <array>
#include <cstdint>

namespace kelo::demo {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

} // namespace

std::string base64UrlEncode(ByteView bytes) {
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
    std::uint32_t pending = 0;
    unsigned bits = 0;
    for (const std::uint8_t byte : bytes) {
        pending = (pending << 8 | byte) & 0xffff;
        bits += 8;
        while (bits >= 6) {
            bits -= 6;
            text += alphabet[pending >> bits & 0x3f];
        }
    }
    if (bits > 0)
        text += alphabet[pending << (6 - bits) & 0x3f];
    return text;
}

std::optional<Bytes> base64UrlDecode(std::string_view text) {
    Bytes bytes;
    bytes.reserve(text.size() * 3 / 4);
    std::uint32_t pending = 0;
    unsigned bits = 0;
    for (const char character : text) {
        const auto value = alphabet.find(character);
        if (value == std::string_view::npos)
            return std::nullopt;
        pending = (pending << 6 | static_cast<std::uint32_t>(value)) & 0x3fff;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<std::uint8_t>(pending >> bits));
        }
    }
    const bool strayBits = (pending & ((1u << bits) - 1)) != 0;
    if (text.size() % 4 == 1 || strayBits)
        return std::nullopt;
    return bytes;
}

} // namespace kelo::demo
