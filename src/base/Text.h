#pragma once

#include <string_view>

namespace kelo {

/// What counts as a blank in text from outside, whatever the locale.
inline constexpr std::string_view blanks = " \t\r\n";

/// The text without leading and trailing blanks.
inline std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace kelo
