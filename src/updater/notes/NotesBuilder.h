#pragma once

#include "updater/driver/ReleaseNotes.h"

#include <cstddef>
#include <string_view>

namespace kelo::updater {

/// Style of a text run.
struct RunStyle {
    bool strong = false;
    bool emphasized = false;
    bool code = false;
};

/// Assembles release notes. Collapses blanks between words to one space, trims paragraphs, leaves
/// out empty ones, and cuts notes that are longer than 64 KiB.
class NotesBuilder {
public:
    /// Ends the current paragraph and begins one of this kind.
    void begin(ParagraphKind kind);
    void add(std::string_view text, RunStyle style);
    ReleaseNotes finish();

private:
    void addCharacter(char c, RunStyle style);
    void endParagraph();

    ReleaseNotes notes;
    Paragraph paragraph;
    bool blankPending = false;
    std::size_t length = 0;
};

/// The text of an HTML page or fragment. Runs and fetches nothing.
ReleaseNotes readHtmlNotes(std::string_view html);

/// The common part of Markdown: paragraphs, "#" headings, list items, **strong**, *emphasized* and
/// `code` text. Of a link the text is kept, unless it is longer than 4 KiB. Everything else is
/// shown as written.
ReleaseNotes readMarkdownNotes(std::string_view text);

} // namespace kelo::updater
