#pragma once

#include "testing/screen/XConnection.h"

namespace kelo::screen {

/// A place on the screen in pixels, from its upper left corner.
struct Point {
    int x = 0;
    int y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

/// A mouse that moves and clicks through the X server (XTEST). Button 1 is the left one.
class Pointer {
public:
    /// Throws std::runtime_error when the server lacks XTEST. The connection must outlive it.
    explicit Pointer(const XConnection& connection);

    void moveTo(Point point) const;
    void down(unsigned button) const;
    void up(unsigned button) const;
    void click(Point point, unsigned button = 1) const;

private:
    const XConnection& connection;
};

} // namespace kelo::screen
