#pragma once

#include "linux/panel/X11Connection.h"

#include <vector>

namespace kelo::panel {

/// Which part of a panel's X window takes clicks, and which part exists at all where nothing can be
/// translucent.
class RoundedShape {
public:
    /// All in points: a rounded rectangle, with a margin around it that is no part of it.
    RoundedShape(int width, int height, int cornerRadius, int margin)
        : width(width), height(height), cornerRadius(cornerRadius), margin(margin) {}

    /// Rows of pixels that lie wholly inside, from the window's upper left corner; as few
    /// rectangles as rows differ.
    std::vector<XRectangle> rectangles(int scale) const;

    /// translucent: whether what is drawn around the rounded rectangle is blended with what lies
    /// behind the window. Else that part is cut off the window.
    void apply(const X11Connection& connection, Window window, int scale, bool translucent) const;

private:
    int width;
    int height;
    int cornerRadius;
    int margin;
};

} // namespace kelo::panel
