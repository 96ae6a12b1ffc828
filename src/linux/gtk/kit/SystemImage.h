#pragma once

#include <string>
#include <string_view>

namespace kelo::gtk {

/// The name in the icon theme of an image that a description names. A name nobody drew yet gives
/// the theme's sign for a missing image, so that the gap is seen.
std::string iconName(std::string_view systemImage);

} // namespace kelo::gtk
