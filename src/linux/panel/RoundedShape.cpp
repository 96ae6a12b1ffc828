#include "linux/panel/RoundedShape.h"

#include <X11/extensions/shape.h>

#include <algorithm>
#include <cmath>

namespace kelo::panel {

namespace {

// How many pixels a quarter circle cuts off this row, counted from its top. The row's outer
// boundary counts, so that each pixel that is left is covered entirely.
int inset(int radius, int row) {
    const double fromCentre = radius - row;
    const double reach =
        std::sqrt(std::max(0.0, double(radius) * radius - fromCentre * fromCentre));
    return static_cast<int>(std::ceil(radius - reach));
}

XRectangle rectangle(int x, int y, int width, int height) {
    return {static_cast<short>(x), static_cast<short>(y), static_cast<unsigned short>(width),
            static_cast<unsigned short>(height)};
}

} // namespace

std::vector<XRectangle> RoundedShape::rectangles(int scale) const {
    const int wide = width * scale;
    const int high = height * scale;
    const int radius = std::min({cornerRadius * scale, wide / 2, high / 2});
    const int edge = margin * scale;
    std::vector<XRectangle> rows;
    const auto add = [&](int row, int rowHeight, int cut) {
        if (wide > 2 * cut)
            rows.push_back(rectangle(edge + cut, edge + row, wide - 2 * cut, rowHeight));
    };
    for (int row = 0; row < radius; ++row)
        add(row, 1, inset(radius, row));
    add(radius, high - 2 * radius, 0);
    for (int row = radius - 1; row >= 0; --row)
        add(high - 1 - row, 1, inset(radius, row));
    return rows;
}

void RoundedShape::apply(const X11Connection& connection, Window window, int scale,
                         bool translucent) const {
    std::vector<XRectangle> rows = rectangles(scale);
    Display* const x = connection.xlib();
    const int count = static_cast<int>(rows.size());
    XShapeCombineRectangles(x, window, ShapeInput, 0, 0, rows.data(), count, ShapeSet, YXBanded);
    if (translucent)
        XShapeCombineMask(x, window, ShapeBounding, 0, 0, None, ShapeSet);
    else
        XShapeCombineRectangles(x, window, ShapeBounding, 0, 0, rows.data(), count, ShapeSet,
                                YXBanded);
}

} // namespace kelo::panel
