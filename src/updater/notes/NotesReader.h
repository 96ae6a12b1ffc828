#pragma once

#include "base/Url.h"
#include "updater/appcast/AppcastItem.h"
#include "updater/driver/ReleaseNotes.h"

#include <cstddef>
#include <string_view>

namespace kelo::updater {

/// Longest page of notes that is fetched, in bytes.
inline constexpr std::size_t notesLimit = std::size_t(1) * 1024 * 1024;

/// Converts text to paragraphs, headings and list items with strong, emphasized and code runs.
/// Scripts, styles, images and link targets are left out. Very long notes are cut. Never fails: for
/// a text that cannot be read the notes are empty.
ReleaseNotes readReleaseNotes(std::string_view text, NotesFormat format);

/// The format that the file name's extension stands for; HTML by default.
NotesFormat notesFormatOf(const Url& url);

} // namespace kelo::updater
