#pragma once

#include "updater/driver/ReleaseNotes.h"

#include <cstddef>
#include <string_view>

namespace kelo::updater {

/// Assembles release notes. Collapses blanks between words to one space except in code, trims
/// paragraphs, leaves out empty ones, and cuts notes that are longer than 64 KiB. Leaves out
/// controls and direction marks, which would turn around or hide what is around them.
class NotesBuilder {
public:
    /// Ends the current paragraph and begins one of this kind.
    void begin(ParagraphKind kind);
    /// Well-formed UTF-8, in the style of this run, whose text counts for nothing.
    void add(std::string_view text, const TextRun& style);
    ReleaseNotes finish();

private:
    void addCharacter(char c, const TextRun& style);
    void endParagraph();

    ReleaseNotes notes;
    Paragraph paragraph;
    bool blankPending = false;
    std::size_t length = 0;
};

/// The text of an HTML page or fragment, and the links in it that are complete addresses of https.
/// Runs and fetches nothing.
ReleaseNotes readHtmlNotes(std::string_view html);

/// Markdown as CommonMark has it.
ReleaseNotes readMarkdownNotes(std::string_view text);

} // namespace kelo::updater
