#include "base/Text.h"
#include "updater/notes/NotesBuilder.h"

#include <algorithm>

namespace kelo::updater {

namespace {

// Adds the text before the mark and removes both from the text; false if the mark is missing.
bool takeUntil(std::string_view mark, std::string_view& text, RunStyle style,
               NotesBuilder& builder) {
    const auto end = text.find(mark);
    if (end == 0 || end == std::string_view::npos)
        return false;
    builder.add(text.substr(0, end), style);
    text.remove_prefix(end + mark.size());
    return true;
}

// Longer than any link, with its address. Without a limit, a megabyte of brackets would be searched
// to its end for each bracket, and Kelo would stand still for half a minute.
constexpr std::size_t longestLink = 4096;

// Takes the rest of "[words](address)" after the first bracket and adds the words.
bool takeLink(std::string_view& text, NotesBuilder& builder) {
    const std::string_view near = text.substr(0, longestLink);
    const auto middle = near.find("](");
    const auto end = middle == std::string_view::npos ? middle : near.find(')', middle);
    if (end == std::string_view::npos)
        return false;
    builder.add(text.substr(0, middle), {});
    text.remove_prefix(end + 1);
    return true;
}

bool takeMarked(std::string_view& text, NotesBuilder& builder) {
    struct Mark {
        std::string_view text;
        RunStyle style;
    };
    static constexpr Mark marks[] = {{"**", {true, false, false}},
                                     {"__", {true, false, false}},
                                     {"*", {false, true, false}},
                                     {"`", {false, false, true}}};
    for (const Mark& mark : marks) {
        std::string_view rest = text;
        if (!rest.starts_with(mark.text))
            continue;
        rest.remove_prefix(mark.text.size());
        if (!rest.starts_with(' ') && takeUntil(mark.text, rest, mark.style, builder)) {
            text = rest;
            return true;
        }
    }
    std::string_view rest = text.substr(1);
    const bool link = text.starts_with('[') && takeLink(rest, builder);
    if (link)
        text = rest;
    return link;
}

void addInline(std::string_view text, NotesBuilder& builder) {
    while (!text.empty()) {
        if (takeMarked(text, builder))
            continue;
        const auto next = std::min(text.find_first_of("*_`[", 1), text.size());
        builder.add(text.substr(0, next), {});
        text.remove_prefix(next);
    }
}

// Removes "- ", "* ", "+ " or "12. ".
bool takeBullet(std::string_view& line) {
    const auto digits = std::min(line.find_first_not_of("0123456789"), line.size());
    const bool numbered = digits > 0 && digits < 4 && line.substr(digits, 2) == ". ";
    const bool bullet = line.starts_with("- ") || line.starts_with("* ") || line.starts_with("+ ");
    if (numbered || bullet)
        line.remove_prefix(numbered ? digits + 2 : 2);
    return numbered || bullet;
}

bool takeHeadingMark(std::string_view& line) {
    const auto count = std::min(line.find_first_not_of('#'), line.size());
    if (count == 0 || count > 6 || (count < line.size() && line[count] != ' '))
        return false;
    line = trimmed(line.substr(count));
    while (line.ends_with('#'))
        line.remove_suffix(1);
    return true;
}

} // namespace

ReleaseNotes readMarkdownNotes(std::string_view text) {
    NotesBuilder builder;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const bool heading = takeHeadingMark(line);
        if (heading)
            builder.begin(ParagraphKind::heading);
        else if (takeBullet(line))
            builder.begin(ParagraphKind::listItem);
        else if (line.empty())
            builder.begin(ParagraphKind::body);
        // A line break inside a paragraph counts as a blank.
        builder.add(" ", {});
        addInline(line, builder);
        if (heading)
            builder.begin(ParagraphKind::body);
    }
    return builder.finish();
}

} // namespace kelo::updater
