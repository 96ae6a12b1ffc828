#pragma once

#include <compare>
#include <string_view>

namespace kelo::updater {

/// Which of two versions is the newer one. Numbers count as numbers, however long; a word makes a
/// version older than the same one without it (1.0b1 < 1.0); missing zeros and everything from the
/// first "-" make no difference (1.0 = 1.0.0 = 1.0-rebuild). Any text is a version.
std::weak_ordering compareVersions(std::string_view left, std::string_view right);

inline bool isOlder(std::string_view left, std::string_view right) {
    return compareVersions(left, right) < 0;
}

} // namespace kelo::updater
