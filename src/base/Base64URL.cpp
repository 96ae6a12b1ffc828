#include "base/Base64URL.h"

#include <algorithm>

namespace kelo {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

std::optional<std::uint32_t> sextet(char c) {
    if (c == '+')
        c = '-';
    if (c == '/')
        c = '_';
    const auto index = alphabet.find(c);
    if (index == std::string_view::npos)
        return std::nullopt;
    return static_cast<std::uint32_t>(index);
}

} // namespace

std::string base64URLEncode(ByteView bytes) {
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
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

std::optional<Bytes> base64URLDecode(std::string_view text) {
    // Missing padding is added up to a full group of four; padding that is present must fit.
    const std::string_view digits = text.substr(0, text.find('='));
    const std::string_view padding = text.substr(digits.size());
    constexpr std::size_t roomForPadding[] = {0, 0, 2, 1};
    const std::size_t rest = digits.size() % 4;
    if (rest == 1 || padding.size() > roomForPadding[rest] ||
        padding.find_first_not_of('=') != std::string_view::npos)
        return std::nullopt;

    Bytes bytes;
    bytes.reserve(digits.size() * 3 / 4);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const auto value = sextet(digits[i]);
        if (!value)
            return std::nullopt;
        group = group << 6 | *value;
        if (i % 4 == 1)
            bytes.push_back(static_cast<std::uint8_t>(group >> 4));
        else if (i % 4 == 2)
            bytes.push_back(static_cast<std::uint8_t>(group >> 2));
        else if (i % 4 == 3)
            bytes.push_back(static_cast<std::uint8_t>(group));
    }
    return bytes;
}

} // namespace kelo
