#include "updater/notes/NotesReader.h"

#include "base/Text.h"
#include "base/Utf8.h"
#include "updater/notes/NotesBuilder.h"

#include <algorithm>

namespace kelo::updater {

namespace {

// Plain text does not say whether a line continues the one before, so each is a paragraph.
ReleaseNotes readPlainText(std::string_view text) {
    NotesBuilder builder;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        builder.begin(ParagraphKind::body);
        builder.add(text.substr(0, end), {});
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return builder.finish();
}

} // namespace

ReleaseNotes readReleaseNotes(std::string_view text, NotesFormat format) {
    text = trimmed(text.substr(0, notesLimit));
    if (text.empty())
        return {};
    if (format == NotesFormat::html)
        return readHtmlNotes(text);
    if (!isWellFormedUtf8(text))
        return {};
    return format == NotesFormat::markdown ? readMarkdownNotes(text) : readPlainText(text);
}

NotesFormat notesFormatOf(const Url& url) {
    const std::string path = url.path();
    if (path.ends_with(".md") || path.ends_with(".markdown"))
        return NotesFormat::markdown;
    return path.ends_with(".txt") ? NotesFormat::plainText : NotesFormat::html;
}

} // namespace kelo::updater
