#pragma once

/// Lengths and places in points; one point is one CSS pixel. On a screen, y grows upward. The
/// desktop's adapter converts it.
namespace kelo::platform {

struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

/// x and y are the lower left corner.
struct Rectangle {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double midX() const { return x + width / 2; }
    double minY() const { return y; }
    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

} // namespace kelo::platform
