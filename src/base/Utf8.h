#pragma once

#include <cstddef>
#include <string_view>

namespace kelo {

/// Well-formed in the sense of Unicode table 3-7: no overlong forms, no surrogates, nothing above
/// U+10FFFF.
bool isWellFormedUtf8(std::string_view text);

/// The bytes of one character.
struct Utf8Sequence {
    /// At least 1. Of an ill-formed sequence, its longest valid beginning.
    std::size_t length;
    bool wellFormed;
};

/// The sequence that begins at this index, which must be in the text.
Utf8Sequence utf8SequenceAt(std::string_view text, std::size_t at);

} // namespace kelo
