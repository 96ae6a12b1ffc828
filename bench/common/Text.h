#pragma once

#include <cstdio>
#include <string>

namespace kelo::bench {

/// As std::printf has it. Cut off after 511 bytes.
template <typename... Values>
std::string formatted(const char* format, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/// The text with what XML gives a meaning escaped.
std::string xmlText(const std::string& text);

} // namespace kelo::bench
