#include "updater/notes/NotesBuilder.h"

#include "base/Text.h"

#include <utility>

namespace kelo::updater {

namespace {

constexpr std::size_t longestNotes = std::size_t(64) * 1024;

bool sameStyle(const TextRun& run, RunStyle style) {
    return run.strong == style.strong && run.emphasized == style.emphasized &&
           run.code == style.code;
}

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

bool isControl(char c) {
    const auto value = static_cast<unsigned char>(c);
    return value < 0x20 || value == 0x7f;
}

} // namespace

void NotesBuilder::begin(ParagraphKind kind) {
    endParagraph();
    paragraph.kind = kind;
}

void NotesBuilder::add(std::string_view text, RunStyle style) {
    for (const char c : text) {
        // Never cut in the middle of a UTF-8 character.
        if (length >= longestNotes && !continuesCharacter(c))
            return;
        if (blanks.find(c) != std::string_view::npos)
            blankPending = true;
        else if (!isControl(c))
            addCharacter(c, style);
    }
}

void NotesBuilder::addCharacter(char c, RunStyle style) {
    const bool first = paragraph.runs.empty();
    if (std::exchange(blankPending, false) && !first)
        paragraph.runs.back().text += ' ';
    if (first || !sameStyle(paragraph.runs.back(), style))
        paragraph.runs.push_back({"", style.strong, style.emphasized, style.code});
    paragraph.runs.back().text += c;
    if (++length == longestNotes)
        paragraph.runs.back().text += "…";
}

void NotesBuilder::endParagraph() {
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
