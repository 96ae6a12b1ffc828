#pragma once

#include <string>
#include <vector>

namespace kelo::updater {

/// Text in one style.
struct TextRun {
    std::string text;
    bool strong = false;
    bool emphasized = false;
    bool code = false;
    /// The address that the text is a link to, which is of https; empty if it is none.
    std::string link = {};
    friend bool operator==(const TextRun&, const TextRun&) = default;
};

enum class ParagraphKind {
    body,
    heading,
    listItem,
    code, ///< lines as they are written, with their line breaks and blanks
};

struct Paragraph {
    ParagraphKind kind = ParagraphKind::body;
    std::vector<TextRun> runs;
    friend bool operator==(const Paragraph&, const Paragraph&) = default;
};

/// Text with simple formatting. It has no scripts or images, and nothing is fetched.
using ReleaseNotes = std::vector<Paragraph>;

} // namespace kelo::updater
