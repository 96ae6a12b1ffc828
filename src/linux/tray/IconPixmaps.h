#pragma once

#include <glibmm/variant.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kelo::tray {

/// A symbolic icon in one size: how much of each pixel it covers, from the upper left corner, line
/// by line.
struct IconMask {
    int size = 0; ///< width and height in pixels
    std::vector<std::uint8_t> coverage;
};

/// In the sizes 16, 22, 24, 32 and 48, as they were drawn when the program was built. Empty for an
/// icon that is not meant for trays.
std::vector<IconMask> iconMasks(const std::string& iconName);

/// The icon in one color (0xRRGGBB) as hosts of trays read pixels, a(iiay): width, height, and four
/// bytes for each pixel, which are alpha, red, green and blue, in this order on every machine, and
/// not multiplied by the alpha.
Glib::VariantBase iconPixmaps(const std::vector<IconMask>& masks, std::uint32_t color);

} // namespace kelo::tray
