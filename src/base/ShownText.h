#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Text that somebody else has chosen, made fit to be shown in a window of ours.
namespace kelo {

/// A name on one line of at most 64 characters; a longer one ends with "…". Line breaks and other
/// runs of blanks become one blank. Controls, direction marks and invisible characters are left
/// out: they would turn around or hide what stands beside the name. What is not UTF-8 is replaced.
/// A letter is not cut off from the accents on it, nor an emoji from its parts, unless there are
/// more of them than the line may have.
std::string shownName(std::string_view name);

/// The same for a longer text: one line of at most this many characters, which is not 0.
std::string shownLine(std::string_view text, std::size_t most);

/// A text of several lines, of at most `most` characters; a longer one ends with "…". Every kind of
/// line break becomes "\n", every other blank a space. What shownName() leaves out and replaces,
/// this does, too. Blanks at the end are left out.
std::string shownText(std::string_view text, std::size_t most);

/// The text without what shownName() leaves out, beside blanks and line breaks. What is not UTF-8
/// is replaced.
std::string withoutHidden(std::string_view text);

/// The text, or its first characters and "…" if it has more than `most`. Never cuts a character.
std::string shortened(std::string_view text, std::size_t most);

/// The text with signs that look alike in place of "<", ">" and "&": for where it is unknown
/// whether markup is read.
std::string withoutMarkup(std::string_view text);

} // namespace kelo
