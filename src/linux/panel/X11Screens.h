#pragma once

#include "linux/panel/X11Connection.h"

#include <optional>
#include <vector>

namespace kelo::panel {

/// The pixels that a panel or dock reserves along the edges of the whole desktop. Each edge has a
/// range, first and last pixel included.
struct Strut {
    int left = 0, right = 0, top = 0, bottom = 0;
    int leftFrom = 0, leftTo = 0;
    int rightFrom = 0, rightTo = 0;
    int topFrom = 0, topTo = 0;
    int bottomFrom = 0, bottomTo = 0;
};

/// Reads _NET_WM_STRUT_PARTIAL (12 numbers) or _NET_WM_STRUT (4 numbers, for whole edges). Empty
/// for any other count.
std::optional<Strut> strutOf(const std::vector<unsigned long>& numbers, PixelRectangle desktop);

/// The part of a monitor that the struts leave free. Struts count from the desktop's edges. One
/// that is meant for an inner edge, between two monitors, therefore covers the whole monitor beyond
/// that edge. It is ignored for that monitor.
PixelRectangle freeArea(PixelRectangle monitor, PixelRectangle desktop,
                        const std::vector<Strut>& struts);

/// The monitors of an X11 desktop. Nothing is cached. Main thread only.
class X11Screens {
public:
    explicit X11Screens(X11Connection connection) : connection(connection) {}

    /// The work area of the monitor that shows the window with the keyboard. If no monitor shows
    /// it, the monitor with the pointer, or else the primary monitor. Empty without any monitor.
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
    /// The work areas that the window manager announces for the current workspace.
    std::vector<PixelRectangle> announced(PixelRectangle monitor, bool isOnlyOne) const;
    std::vector<Strut> struts() const;

    X11Connection connection;
};

} // namespace kelo::panel
