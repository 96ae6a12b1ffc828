#include "base/Base64.h"

#include <algorithm>

namespace kelo {

namespace {

constexpr std::string_view standardAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view urlAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

std::string encode(ByteView bytes, std::string_view alphabet) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t taken = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = group << 8 | (j < taken ? bytes[i + j] : 0);
        for (std::size_t j = 0; j <= taken; ++j)
            text += alphabet[group >> (18 - 6 * j) & 63];
    }
    return text;
}

enum class SurplusBits { ignored, refused };

/// Reads digits without padding.
std::optional<Bytes> decode(std::string_view digits, std::string_view alphabet,
                            SurplusBits surplus) {
    if (digits.size() % 4 == 1)
        return std::nullopt;
    Bytes bytes;
    bytes.reserve(digits.size() * 3 / 4);
    std::uint32_t pending = 0;
    unsigned pendingBits = 0;
    for (const char digit : digits) {
        const auto value = alphabet.find(digit);
        if (value == std::string_view::npos)
            return std::nullopt;
        pending = pending << 6 | static_cast<std::uint32_t>(value);
        pendingBits += 6;
        if (pendingBits >= 8) {
            pendingBits -= 8;
            bytes.push_back(static_cast<std::uint8_t>(pending >> pendingBits));
            pending &= (1u << pendingBits) - 1;
        }
    }
    if (pending != 0 && surplus == SurplusBits::refused)
        return std::nullopt;
    return bytes;
}

} // namespace

std::string base64Encode(ByteView bytes) {
    std::string text = encode(bytes, standardAlphabet);
    text.append((4 - text.size() % 4) % 4, '=');
    return text;
}

std::optional<Bytes> base64Decode(std::string_view text) {
    if (text.size() % 4 != 0)
        return std::nullopt;
    for (int padding = 0; padding < 2 && text.ends_with('='); ++padding)
        text.remove_suffix(1);
    return decode(text, standardAlphabet, SurplusBits::refused);
}

std::string base64URLEncode(ByteView bytes) {
    return encode(bytes, urlAlphabet);
}

std::optional<Bytes> base64URLDecode(std::string_view text) {
    // Missing padding is filled up to a whole group of four. Padding that is there must fit.
    std::string digits(text.substr(0, text.find('=')));
    const std::string_view padding = text.substr(digits.size());
    constexpr std::size_t roomForPadding[] = {0, 0, 2, 1};
    if (padding.size() > roomForPadding[digits.size() % 4] ||
        padding.find_first_not_of('=') != std::string_view::npos)
        return std::nullopt;
    std::ranges::replace(digits, '+', '-');
    std::ranges::replace(digits, '/', '_');
    return decode(digits, urlAlphabet, SurplusBits::ignored);
}

std::optional<Bytes> base64URLDecodeStrict(std::string_view text) {
    return decode(text, urlAlphabet, SurplusBits::refused);
}

} // namespace kelo
