#pragma once

#include "linux/panel/X11Connection.h"

#include <optional>
#include <vector>

namespace kelo::panel {

/// Pixels along the edges of the whole desktop that a panel or dock keeps for itself, each edge
/// from one place to another, both included.
struct Strut {
    int left = 0, right = 0, top = 0, bottom = 0;
    int leftFrom = 0, leftTo = 0;
    int rightFrom = 0, rightTo = 0;
    int topFrom = 0, topTo = 0;
    int bottomFrom = 0, bottomTo = 0;
};

/// From _NET_WM_STRUT_PARTIAL (12 numbers) or _NET_WM_STRUT (4: along the whole edge); nothing for
/// any other count.
std::optional<Strut> strutOf(const std::vector<unsigned long>& numbers, PixelRectangle desktop);

/// What the struts leave of a monitor. Struts count from the desktop's edges, so that one at an
/// edge between two monitors runs over the whole of the other one: such a one is not meant for
/// that.
PixelRectangle freeArea(PixelRectangle monitor, PixelRectangle desktop,
                        const std::vector<Strut>& struts);

/// The monitors of an X11 desktop, asked anew every time. Main thread only.
class X11Screens {
public:
    explicit X11Screens(X11Connection connection) : connection(connection) {}

    /// What panels and docks leave of the monitor with the window that has the keyboard; of the one
    /// with the pointer when that says nothing, else of the primary one. Nothing without a monitor.
    std::optional<PixelRectangle> mainWorkArea() const;

private:
    struct Monitors {
        std::vector<PixelRectangle> all;
        std::size_t primary = 0;
    };

    Monitors monitors() const;
    PixelRectangle desktop() const;
    std::optional<std::size_t> withKeyboard(const std::vector<PixelRectangle>& monitors) const;
    std::optional<std::size_t> withPointer(const std::vector<PixelRectangle>& monitors) const;
    PixelRectangle workArea(PixelRectangle monitor, bool isOnlyOne) const;
    /// Rectangles of a property that has one or more for each workspace; of the current one.
    std::vector<PixelRectangle> announced(PixelRectangle monitor, bool isOnlyOne) const;
    std::vector<Strut> struts() const;

    X11Connection connection;
};

} // namespace kelo::panel
