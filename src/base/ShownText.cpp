#include "base/ShownText.h"

#include "base/Utf8.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace kelo {

namespace {

constexpr std::size_t longestName = 64;
constexpr std::string_view ellipsis = "…";
constexpr char32_t replacement = 0xFFFD;
constexpr char32_t joiner = 0x200D;

struct Range {
    char32_t first;
    char32_t last;
};

constexpr std::array blankRanges = {
    Range{0x09, 0x0D},     Range{0x20, 0x20},     Range{0x85, 0x85},     Range{0xA0, 0xA0},
    Range{0x1680, 0x1680}, Range{0x2000, 0x200A}, Range{0x2028, 0x2029}, Range{0x202F, 0x202F},
    Range{0x205F, 0x205F}, Range{0x3000, 0x3000}};

// Beside the pair of carriage return and line feed.
constexpr std::array lineBreakRanges = {Range{0x0A, 0x0D}, Range{0x85, 0x85},
                                        Range{0x2028, 0x2029}};

// The two joiners U+200C and U+200D stay: some scripts cannot be spelled without them.
constexpr std::array hiddenRanges = {
    Range{0x00, 0x1F},     Range{0x7F, 0x9F},     Range{0xAD, 0xAD},     Range{0x61C, 0x61C},
    Range{0x115F, 0x1160}, Range{0x180E, 0x180E}, Range{0x200B, 0x200B}, Range{0x200E, 0x200F},
    Range{0x202A, 0x202E}, Range{0x2060, 0x206F}, Range{0x3164, 0x3164}, Range{0xFEFF, 0xFEFF},
    Range{0xFFA0, 0xFFA0}, Range{0xFFF9, 0xFFFB}};

// Not every mark of every script. A mark that is missing here may be cut off its letter, which is
// still a text.
constexpr std::array markRanges = {
    Range{0x300, 0x36F},     Range{0x483, 0x489},     Range{0x591, 0x5C7},    Range{0x610, 0x61A},
    Range{0x64B, 0x65F},     Range{0x670, 0x670},     Range{0x6D6, 0x6ED},    Range{0x93A, 0x94F},
    Range{0xE31, 0xE3A},     Range{0xE47, 0xE4E},     Range{0x1AB0, 0x1AFF},  Range{0x1DC0, 0x1DFF},
    Range{0x200C, 0x200D},   Range{0x20D0, 0x20FF},   Range{0xFE00, 0xFE0F},  Range{0xFE20, 0xFE2F},
    Range{0x1F3FB, 0x1F3FF}, Range{0xE0020, 0xE007F}, Range{0xE0100, 0xE01EF}};

bool isIn(std::span<const Range> ranges, char32_t character) {
    return std::ranges::any_of(ranges, [character](const Range& range) {
        return range.first <= character && character <= range.last;
    });
}

/// Half of a flag.
bool isRegionalIndicator(char32_t character) {
    return character >= 0x1F1E6 && character <= 0x1F1FF;
}

/// Whether the character at this index belongs to the one before.
bool continues(std::u32string_view text, std::size_t at) {
    if (isIn(markRanges, text[at]) || text[at - 1] == joiner)
        return true;
    std::size_t indicators = 0;
    while (indicators < at && isRegionalIndicator(text[at - 1 - indicators]))
        ++indicators;
    return isRegionalIndicator(text[at]) && indicators % 2 == 1;
}

char32_t characterIn(std::string_view sequence) {
    if (sequence.size() == 1)
        return static_cast<unsigned char>(sequence.front());
    auto character = static_cast<char32_t>(static_cast<unsigned char>(sequence.front()) &
                                           (0xFFU >> (sequence.size() + 1)));
    for (const char byte : sequence.substr(1))
        character = (character << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
    return character;
}

void append(std::string& text, char32_t character) {
    const auto tail = [character](int shift) {
        return static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += {static_cast<char>(0xC0 | (character >> 6)), tail(0)};
    } else if (character < 0x10000) {
        text += {static_cast<char>(0xE0 | (character >> 12)), tail(6), tail(0)};
    } else {
        text += {static_cast<char>(0xF0 | (character >> 18)), tail(12), tail(6), tail(0)};
    }
}

/// The characters that are shown, up to a few more than the line may have.
std::u32string visibleBeginning(std::string_view name, std::size_t most) {
    std::u32string shown;
    bool blank = false;
    for (std::size_t at = 0; at < name.size() && shown.size() <= most;) {
        const Utf8Sequence sequence = utf8SequenceAt(name, at);
        const char32_t character =
            sequence.wellFormed ? characterIn(name.substr(at, sequence.length)) : replacement;
        at += sequence.length;
        if (isIn(blankRanges, character)) {
            blank = !shown.empty();
        } else if (!isIn(hiddenRanges, character)) {
            if (blank)
                shown += U' ';
            blank = false;
            shown += character;
        }
    }
    return shown;
}

/// Where a line that is too long is cut, so that the ellipsis has room.
std::size_t cutIn(std::u32string_view shown, std::size_t most) {
    std::size_t cut = most - 1;
    while (cut > 0 && continues(shown, cut))
        --cut;
    if (cut == 0)
        return most - 1;
    return shown[cut - 1] == U' ' ? cut - 1 : cut;
}

} // namespace

std::string shownName(std::string_view name) {
    return shownLine(name, longestName);
}

std::string shownLine(std::string_view line, std::size_t most) {
    std::u32string shown = visibleBeginning(line, most);
    const bool isCut = shown.size() > most;
    if (isCut)
        shown.resize(cutIn(shown, most));
    std::string text;
    for (const char32_t character : shown)
        append(text, character);
    if (isCut)
        text += ellipsis;
    return text;
}

std::string shownText(std::string_view text, std::size_t most) {
    std::string shown;
    std::string blanks; // so far not followed by anything
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size() && count <= most;) {
        const Utf8Sequence sequence = utf8SequenceAt(text, at);
        const char32_t character =
            sequence.wellFormed ? characterIn(text.substr(at, sequence.length)) : replacement;
        at += sequence.length;
        if (character == U'\r' && at < text.size() && text[at] == '\n')
            continue;
        const bool isBlank = isIn(blankRanges, character);
        if (!isBlank && isIn(hiddenRanges, character))
            continue;
        ++count;
        if (isBlank) {
            blanks += isIn(lineBreakRanges, character) ? '\n' : ' ';
        } else {
            shown += std::exchange(blanks, {});
            append(shown, character);
        }
    }
    return shortened(shown, most);
}

std::string withoutHidden(std::string_view text) {
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Sequence sequence = utf8SequenceAt(text, at);
        const char32_t character =
            sequence.wellFormed ? characterIn(text.substr(at, sequence.length)) : replacement;
        at += sequence.length;
        if (isIn(blankRanges, character) || !isIn(hiddenRanges, character))
            append(shown, character);
    }
    return shown;
}

std::string shortened(std::string_view text, std::size_t most) {
    std::size_t at = 0;
    std::size_t end = 0; // of the text that leaves room for the ellipsis
    for (std::size_t count = 0; at < text.size(); ++count) {
        if (count == most)
            return std::string(text.substr(0, end)).append(ellipsis);
        if (count + 1 == most)
            end = at;
        at += utf8SequenceAt(text, at).length;
    }
    return std::string(text);
}

// Some desktops read markup in a notification, others show what would keep them from it.
std::string withoutMarkup(std::string_view text) {
    std::string plain;
    for (const char character : text)
        if (character == '<')
            plain += "‹";
        else if (character == '>')
            plain += "›";
        else if (character == '&')
            plain += "＆";
        else
            plain += character;
    return plain;
}

} // namespace kelo
