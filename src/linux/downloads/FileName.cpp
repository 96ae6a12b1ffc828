#include "linux/downloads/FileName.h"

#include "base/ShownText.h"
#include "base/Utf8.h"

#include <glib.h>

#include <algorithm>
#include <array>

namespace kelo::downloads {

namespace {

constexpr std::size_t longestExtension = 16;
constexpr std::size_t longestInnerExtension = 5;
constexpr gunichar nonJoiner = 0x200C;
constexpr gunichar joiner = 0x200D;

// Windows and its file systems, which sticks and shared folders have, take none of these.
constexpr std::string_view refused = "/\\:*?\"<>|";

// A joiner at the beginning would hide the dot behind it, or be the whole of the name.
constexpr std::array<std::string_view, 4> notFirst = {".", " ", "\u200c", "\u200d"};

constexpr std::array<std::string_view, 10> compressions = {".gz", ".bz2",  ".xz", ".zst", ".lz",
                                                           ".br", ".lzma", ".z",  ".lz4", ".lzo"};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), g_ascii_tolower);
    return lower;
}

std::string cleaned(std::string_view suggestion) {
    std::string name = shownLine(suggestion, suggestion.size() + 1);
    std::ranges::replace_if(
        name, [](char character) { return refused.find(character) != std::string_view::npos; },
        '_');
    const auto begins = [&name](std::string_view text) { return name.starts_with(text); };
    while (std::ranges::any_of(notFirst, begins))
        name.erase(0, utf8SequenceAt(name, 0).length);
    name.erase(name.find_last_not_of(". ") + 1);
    return name;
}

/// Where the extension begins in the name, or its end if it has none.
std::size_t extensionIn(std::string_view name, std::size_t longest) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size())
        return name.size();
    const std::string_view letters = name.substr(dot + 1);
    const bool isOne = letters.size() <= longest && std::ranges::all_of(letters, [](char letter) {
                           return g_ascii_isalnum(letter) || letter == '-' || letter == '_';
                       });
    return isOne ? dot : name.size();
}

// On Windows they are no files, whatever the extension. A name that a stick could not take would be
// a trap.
bool isDevice(std::string_view stem) {
    constexpr std::array names = {"con", "prn", "aux", "nul", "conin$", "conout$"};
    constexpr std::array digits = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "¹", "²", "³"};
    std::string name = lowerCase(stem.substr(0, stem.find('.')));
    name.erase(name.find_last_not_of(' ') + 1);
    if (std::ranges::find(names, name) != names.end())
        return true;
    return (name.starts_with("com") || name.starts_with("lpt")) &&
           std::ranges::find(digits, name.substr(3)) != digits.end();
}

/// Whether the character continues the one before it, as an accent does.
bool continues(gunichar before, gunichar character) {
    const bool isSkinTone = character >= 0x1F3FB && character <= 0x1F3FF;
    return g_unichar_ismark(character) || isSkinTone || character == joiner ||
           character == nonJoiner || before == joiner;
}

/// The beginning of the text, in at most so many bytes.
std::string_view beginning(const std::string& text, std::size_t mostBytes) {
    if (text.size() <= mostBytes)
        return text;
    const char* const start = text.c_str();
    const char* cut = start + mostBytes;
    while (cut > start && (static_cast<unsigned char>(*cut) & 0xC0U) == 0x80U)
        --cut;
    const char* const whole = cut;
    while (cut > start) {
        const char* const before = g_utf8_prev_char(cut);
        if (!continues(g_utf8_get_char(before), g_utf8_get_char(cut)))
            break;
        cut = before;
    }
    // One letter with more marks than a name has room for.
    if (cut == start)
        cut = whole;
    const std::string_view kept(start, static_cast<std::size_t>(cut - start));
    const std::size_t last = kept.find_last_not_of(". ");
    return last == std::string_view::npos ? kept : kept.substr(0, last + 1);
}

} // namespace

FileName safeFileName(std::string_view suggestion) {
    std::string name = cleaned(suggestion);
    if (name.empty())
        name = "download";
    std::size_t end = extensionIn(name, longestExtension);
    const std::string extension = lowerCase(std::string_view(name).substr(end));
    if (std::ranges::find(compressions, extension) != compressions.end())
        end = std::min(end,
                       extensionIn(std::string_view(name).substr(0, end), longestInnerExtension));
    FileName split{name.substr(0, end), name.substr(end)};
    if (isDevice(split.stem))
        split.stem.insert(0, "_");
    return split;
}

std::string numbered(const FileName& name, unsigned number, std::size_t mostBytes) {
    const std::string end =
        (number > 1 ? " (" + std::to_string(number) + ")" : std::string()) + name.extension;
    return std::string(beginning(name.stem, mostBytes - end.size())) + end;
}

} // namespace kelo::downloads
