#include "updater/archive/Base64.h"

#include "base/Text.h"

namespace kelo::updater {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::optional<Bytes> decodeBase64(std::string_view text) {
    text = trimmed(text);
    if (text.size() % 4 != 0)
        return std::nullopt;
    for (int padding = 0; padding < 2 && text.ends_with('='); ++padding)
        text.remove_suffix(1);

    Bytes bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const auto value = alphabet.find(c);
        if (value == std::string_view::npos)
            return std::nullopt;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::uint8_t>(bits >> count));
            bits &= (1u << count) - 1;
        }
    }
    // Encoders set the unused bits to zero.
    return bits == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace kelo::updater
