#pragma once

#include <string_view>

namespace kelo {

/// Well-formed in the sense of Unicode table 3-7: no overlong forms, no surrogates, nothing above
/// U+10FFFF.
bool isWellFormedUtf8(std::string_view text);

} // namespace kelo
