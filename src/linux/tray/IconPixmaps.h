#pragma once

#include <glibmm/variant.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kelo::tray {

/// A symbolic icon in one size: the coverage of each pixel (0 to 255), row by row from the upper
/// left corner.
struct IconMask {
    int size = 0; ///< width and height in pixels
    std::vector<std::uint8_t> coverage;
};

/// The icon in the sizes 16, 22, 24, 32 and 48, drawn at build time. Empty for an icon that was not
/// drawn for the tray.
std::vector<IconMask> iconMasks(const std::string& iconName);

/// The icon in one color (0xRRGGBB) in the format of the protocol, a(iiay): width, height and four
/// bytes for each pixel: alpha, red, green, blue. The order is the same on every machine. The
/// colors are not premultiplied.
Glib::VariantBase iconPixmaps(const std::vector<IconMask>& masks, std::uint32_t color);

} // namespace kelo::tray
