#include "linux/downloads/FileName.h"

#include "linux/gobject/GObjectPointer.h"

#include <glib.h>

#include <algorithm>
#include <array>

namespace kelo::downloads {

namespace {

constexpr std::size_t longestExtension = 16;
constexpr std::size_t longestInnerExtension = 5;
constexpr gunichar nonJoiner = 0x200C;
constexpr gunichar joiner = 0x200D;

constexpr std::array<std::string_view, 10> compressions = {".gz", ".bz2",  ".xz", ".zst", ".lz",
                                                           ".br", ".lzma", ".z",  ".lz4", ".lzo"};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), g_ascii_tolower);
    return lower;
}

void append(std::string& text, gunichar character) {
    std::array<char, 6> bytes{};
    const int length = g_unichar_to_utf8(character, bytes.data());
    text.append(bytes.data(), static_cast<std::size_t>(length));
}

/// The character as it may stand in a name; 0 to leave it out.
gunichar fitForName(gunichar character) {
    // Windows and its file systems, which sticks and shared folders have, take none of these.
    constexpr std::u32string_view refused = U"/\\:*?\"<>|";
    switch (g_unichar_type(character)) {
    case G_UNICODE_FORMAT:
        // Some scripts cannot be spelled without the joiners. The others turn text around or hide
        // in it: the name would be shown with another extension than the file has.
        return character == joiner || character == nonJoiner ? character : 0;
    case G_UNICODE_CONTROL:
    case G_UNICODE_LINE_SEPARATOR:
    case G_UNICODE_PARAGRAPH_SEPARATOR:
        return '_';
    default:
        return refused.find(character) == std::u32string_view::npos ? character : U'_';
    }
}

std::string cleaned(std::string_view suggestion) {
    const gobject::GText valid(
        g_utf8_make_valid(suggestion.data(), static_cast<gssize>(suggestion.size())));
    std::string name;
    for (const char* at = valid.get(); *at != '\0'; at = g_utf8_next_char(at))
        if (const gunichar character = fitForName(g_utf8_get_char(at)))
            append(name, character);
    name.erase(0, name.find_first_not_of(". "));
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
    const std::string name = lowerCase(stem.substr(0, stem.find('.')));
    if (name == "con" || name == "prn" || name == "aux" || name == "nul")
        return true;
    return name.size() == 4 && (name.starts_with("com") || name.starts_with("lpt")) &&
           g_ascii_isdigit(name[3]);
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
