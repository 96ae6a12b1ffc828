#pragma once

#include "updater/driver/ReleaseNotes.h"

#include <string_view>

namespace kelo::updater {

/// The common part of Markdown: paragraphs, "#" headings, list items, **strong**, *emphasized*,
/// `code`, and links, of which the words stay. Everything else is shown as it is written.
ReleaseNotes readMarkdownNotes(std::string_view text);

} // namespace kelo::updater
