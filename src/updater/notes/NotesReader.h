#pragma once

#include "base/Url.h"
#include "updater/appcast/AppcastItem.h"
#include "updater/driver/ReleaseNotes.h"

#include <cstddef>
#include <string_view>

namespace kelo::updater {

/// Longest page of notes that is fetched.
inline constexpr std::size_t notesLimit = std::size_t(1) * 1024 * 1024;

/// What of the text can be shown as paragraphs, headings and list items with strong, emphasized and
/// code runs; everything else (scripts, styles, pictures, where links lead to) is left out. Very
/// long notes are cut. Never fails: a text without sense gives no notes.
ReleaseNotes readReleaseNotes(std::string_view text, NotesFormat format);

/// By the ending of the file name; HTML unless it says otherwise.
NotesFormat notesFormatOf(const Url& url);

} // namespace kelo::updater
