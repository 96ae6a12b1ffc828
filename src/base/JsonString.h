#pragma once

#include <string_view>

namespace kelo {

/// Appends the text as a JSON string, with its quotation marks, in the one spelling that WebAuthn
/// Level 3 prescribes for client data (CCDToString): a backslash before quotation marks and
/// backslashes, \u and four lower-case digits for characters below U+0020, everything else as it
/// is. Container: of char or std::uint8_t. The text must be UTF-8.
template <typename Container>
void appendJsonString(Container& json, std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto append = [&json](char character) {
        json.push_back(static_cast<typename Container::value_type>(character));
    };
    append('"');
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20) {
            for (const char escape : std::string_view("\\u00"))
                append(escape);
            append(digits[byte >> 4]);
            append(digits[byte & 0xF]);
            continue;
        }
        if (character == '"' || character == '\\')
            append('\\');
        append(character);
    }
    append('"');
}

} // namespace kelo
