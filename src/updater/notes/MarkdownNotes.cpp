#include "updater/notes/NotesBuilder.h"

#include <cmark.h>

#include <cstdlib>
#include <memory>

namespace kelo::updater {

namespace {

struct TextDeleter {
    void operator()(char* text) const { std::free(text); }
};

} // namespace

// HTML inside of Markdown is read like any other: the reader takes nothing but words from it.
ReleaseNotes readMarkdownNotes(std::string_view text) {
    const std::unique_ptr<char, TextDeleter> html(
        cmark_markdown_to_html(text.data(), text.size(), CMARK_OPT_UNSAFE));
    return html ? readHtmlNotes(html.get()) : ReleaseNotes();
}

} // namespace kelo::updater
