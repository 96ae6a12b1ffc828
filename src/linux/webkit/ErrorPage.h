#pragma once

#include "base/Url.h"

#include <string>

namespace kelo::webkit {

/// What the "Try again" link of a notice leads to. Nothing is there: the view takes the click.
inline constexpr const char* tryAgainAddress = "kelo:try-again";

/// A calm page in place of one that could not be shown: a heading, a sentence, and "Try again".
/// Takes plain texts. Holds no script and loads nothing.
std::string noticePage(const std::string& heading, const std::string& sentence);

} // namespace kelo::webkit
