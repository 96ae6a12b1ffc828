#pragma once

/// Lengths and places on a screen, in points (one CSS pixel each). Where a place is on a screen, y
/// grows upward; the desktop's adapter flips it.
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

/// From its lower left corner.
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
