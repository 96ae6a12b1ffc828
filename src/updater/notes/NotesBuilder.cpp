#include "updater/notes/NotesBuilder.h"

#include "base/ShownText.h"

#include <string>
#include <utility>
#include <vector>

namespace kelo::updater {

namespace {

constexpr std::size_t longestNotes = std::size_t(64) * 1024;

bool sameStyle(const TextRun& run, const TextRun& style) {
    return run.strong == style.strong && run.emphasized == style.emphasized &&
           run.code == style.code && run.link == style.link;
}

/// Removes line breaks from the end of the last run, and the runs that are empty then.
void trimLines(std::vector<TextRun>& runs) {
    while (!runs.empty()) {
        std::string& last = runs.back().text;
        while (last.ends_with('\n'))
            last.pop_back();
        if (!last.empty())
            return;
        runs.pop_back();
    }
}

/// Controls in code that are neither line breaks nor tabs.
bool isOddControl(char c) {
    return static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t';
}

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

} // namespace

void NotesBuilder::begin(ParagraphKind kind) {
    endParagraph();
    paragraph.kind = kind;
}

void NotesBuilder::add(std::string_view text, const TextRun& style) {
    const bool isVerbatim = paragraph.kind == ParagraphKind::code;
    for (const char c : withoutHidden(text)) {
        // Never cut in the middle of a UTF-8 character.
        if (length >= longestNotes && !continuesCharacter(c))
            return;
        if (isVerbatim ? isOddControl(c) : static_cast<unsigned char>(c) <= ' ')
            blankPending = !isVerbatim;
        else
            addCharacter(c, style);
    }
}

void NotesBuilder::addCharacter(char c, const TextRun& style) {
    const bool first = paragraph.runs.empty();
    if (std::exchange(blankPending, false) && !first)
        paragraph.runs.back().text += ' ';
    if (first || !sameStyle(paragraph.runs.back(), style)) {
        paragraph.runs.push_back(style);
        paragraph.runs.back().text.clear();
    }
    paragraph.runs.back().text += c;
    if (++length == longestNotes)
        paragraph.runs.back().text += "…";
}

void NotesBuilder::endParagraph() {
    if (paragraph.kind == ParagraphKind::code)
        trimLines(paragraph.runs);
    if (!paragraph.runs.empty())
        notes.push_back(std::move(paragraph));
    paragraph = {};
    blankPending = false;
}

ReleaseNotes NotesBuilder::finish() {
    endParagraph();
    return std::move(notes);
}

} // namespace kelo::updater
