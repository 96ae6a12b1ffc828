#pragma once

#include <compare>
#include <string_view>

namespace kelo::updater {

/// Compares two versions; the newer one is greater. Numbers compare by value, of any length. A word
/// makes a version older (1.0b1 < 1.0). Missing zeros and everything from the first "-" are ignored
/// (1.0 = 1.0.0 = 1.0-rebuild). Every text is a valid version.
std::weak_ordering compareVersions(std::string_view left, std::string_view right);

inline bool isOlder(std::string_view left, std::string_view right) {
    return compareVersions(left, right) < 0;
}

} // namespace kelo::updater
