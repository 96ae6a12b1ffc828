#include "updater/appcast/Version.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kelo::updater {

namespace {

// In ascending order. A word is less than the end of the version, because it marks a pre-release.
enum class PartKind { word, end, separator, number };

struct Part {
    PartKind kind = PartKind::end;
    std::string_view text;
};

using Parts = std::vector<Part>;

// ASCII only, whatever the locale; every other character belongs to a word.
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isSeparator(char c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool ascii = static_cast<unsigned char>(c) < 0x80;
    return ascii && !letter && !isDigit(c);
}

PartKind kindOf(char c) {
    if (isDigit(c))
        return PartKind::number;
    return isSeparator(c) ? PartKind::separator : PartKind::word;
}

Parts partsOf(std::string_view version) {
    version = version.substr(0, version.find('-'));
    Parts parts;
    while (!version.empty()) {
        const PartKind kind = kindOf(version.front());
        std::size_t length = 1;
        while (kind != PartKind::separator && length < version.size() &&
               kindOf(version[length]) == kind)
            ++length;
        parts.push_back({kind, version.substr(0, length)});
        version.remove_prefix(length);
    }
    return parts;
}

// Number of leading parts that are numbers and periods.
std::size_t numericLength(const Parts& parts) {
    const auto end = std::find_if(parts.begin(), parts.end(), [](const Part& part) {
        return part.kind != PartKind::number && part.text != ".";
    });
    return static_cast<std::size_t>(end - parts.begin());
}

void fillUp(Parts& parts, std::size_t from, std::size_t to) {
    for (; from > 0 && from < to; ++from) {
        const bool afterNumber = parts[from - 1].kind == PartKind::number;
        const Part part =
            afterNumber ? Part{PartKind::separator, "."} : Part{PartKind::number, "0"};
        parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(from), part);
    }
}

std::strong_ordering compareNumbers(std::string_view left, std::string_view right) {
    left.remove_prefix(std::min(left.find_first_not_of('0'), left.size()));
    right.remove_prefix(std::min(right.find_first_not_of('0'), right.size()));
    const auto lengths = left.size() <=> right.size();
    return lengths != 0 ? lengths : left <=> right;
}

std::weak_ordering compareParts(const Part& left, const Part& right) {
    if (left.kind != right.kind)
        return left.kind <=> right.kind;
    if (left.kind == PartKind::number)
        return compareNumbers(left.text, right.text);
    if (left.kind == PartKind::word)
        return left.text <=> right.text;
    return std::weak_ordering::equivalent;
}

} // namespace

std::weak_ordering compareVersions(std::string_view leftText, std::string_view rightText) {
    Parts left = partsOf(leftText);
    Parts right = partsOf(rightText);
    const std::size_t leftLength = numericLength(left);
    const std::size_t rightLength = numericLength(right);
    fillUp(left, leftLength, rightLength);
    fillUp(right, rightLength, leftLength);

    const std::size_t count = std::max(left.size(), right.size());
    for (std::size_t i = 0; i < count; ++i) {
        const Part none;
        const auto order =
            compareParts(i < left.size() ? left[i] : none, i < right.size() ? right[i] : none);
        if (order != 0)
            return order;
    }
    return std::weak_ordering::equivalent;
}

} // namespace kelo::updater
