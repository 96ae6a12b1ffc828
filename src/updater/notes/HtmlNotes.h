#pragma once

#include "updater/driver/ReleaseNotes.h"

#include <string_view>

namespace kelo::updater {

/// The text of a page or of a piece of one, as far as it has words. Nothing is run or fetched.
ReleaseNotes readHtmlNotes(std::string_view html);

} // namespace kelo::updater
