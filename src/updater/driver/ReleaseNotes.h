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
    friend bool operator==(const TextRun&, const TextRun&) = default;
};

enum class ParagraphKind { body, heading, listItem };

struct Paragraph {
    ParagraphKind kind = ParagraphKind::body;
    std::vector<TextRun> runs;
    friend bool operator==(const Paragraph&, const Paragraph&) = default;
};

/// Text with simple formatting. It has no scripts, images or links, and nothing is fetched.
using ReleaseNotes = std::vector<Paragraph>;

} // namespace kelo::updater
