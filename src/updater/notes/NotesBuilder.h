#pragma once

#include "updater/driver/ReleaseNotes.h"

#include <cstddef>
#include <string_view>

namespace kelo::updater {

/// How text is set off from its paragraph.
struct RunStyle {
    bool strong = false;
    bool emphasized = false;
    bool code = false;
};

/// Puts notes together piece by piece. Blanks between words become one, those around a paragraph
/// none; empty paragraphs are left out, and so is what goes beyond a sensible length.
class NotesBuilder {
public:
    /// Ends the paragraph so far; what follows is of this kind.
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

} // namespace kelo::updater
