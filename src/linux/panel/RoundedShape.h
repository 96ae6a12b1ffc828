#pragma once

#include "linux/panel/X11Connection.h"

#include <vector>

namespace kelo::panel {

/// Sets the shapes of a panel's X window: the part that takes clicks and, if the display cannot
/// blend windows, the part that is drawn.
class RoundedShape {
public:
    /// The size of the rounded rectangle and the margin around it, in points.
    RoundedShape(int width, int height, int cornerRadius, int margin)
        : width(width), height(height), cornerRadius(cornerRadius), margin(margin) {}

    /// The pixels that lie wholly inside the rounded rectangle, counted from the window's upper
    /// left corner. Equal rows share one rectangle.
    std::vector<XRectangle> rectangles(int scale) const;

    /// translucent: whether a compositor blends the margin with what lies behind the window. If
    /// not, the margin is cut off.
    void apply(const X11Connection& connection, Window window, int scale, bool translucent) const;

private:
    int width;
    int height;
    int cornerRadius;
    int margin;
};

} // namespace kelo::panel
