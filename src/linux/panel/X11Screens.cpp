#include "linux/panel/X11Screens.h"

#include "linux/window/X11Handles.h"

#include <X11/Xatom.h>
#include <X11/extensions/Xrandr.h>

#include <algorithm>
#include <memory>
#include <string>

namespace kelo::panel {

namespace {

struct MonitorsDeleter {
    void operator()(XRRMonitorInfo* monitors) const { XRRFreeMonitors(monitors); }
};

int right(const PixelRectangle& area) {
    return area.x + area.width;
}

int bottom(const PixelRectangle& area) {
    return area.y + area.height;
}

/// Has no width or no height if the rectangles do not meet.
PixelRectangle intersection(const PixelRectangle& one, const PixelRectangle& other) {
    const int x = std::max(one.x, other.x);
    const int y = std::max(one.y, other.y);
    return {x, y, std::max(0, std::min(right(one), right(other)) - x),
            std::max(0, std::min(bottom(one), bottom(other)) - y)};
}

long long surface(const PixelRectangle& area) {
    return static_cast<long long>(area.width) * area.height;
}

/// The monitor that shows the largest part of the window.
std::optional<std::size_t> mostOf(const PixelRectangle& window,
                                  const std::vector<PixelRectangle>& monitors) {
    std::optional<std::size_t> best;
    long long most = 0;
    for (std::size_t index = 0; index < monitors.size(); ++index)
        if (const long long shown = surface(intersection(window, monitors[index])); shown > most) {
            best = index;
            most = shown;
        }
    return best;
}

/// Four numbers make one rectangle: x, y, width, height.
std::vector<PixelRectangle> rectangles(const std::vector<unsigned long>& numbers) {
    std::vector<PixelRectangle> found;
    for (std::size_t at = 0; at + 3 < numbers.size(); at += 4)
        found.push_back({static_cast<int>(numbers[at]), static_cast<int>(numbers[at + 1]),
                         static_cast<int>(numbers[at + 2]), static_cast<int>(numbers[at + 3])});
    return found;
}

} // namespace

std::optional<Strut> strutOf(const std::vector<unsigned long>& numbers, PixelRectangle desktop) {
    if (numbers.size() != 4 && numbers.size() != 12)
        return std::nullopt;
    const auto number = [&](std::size_t at) {
        constexpr unsigned long most = 1U << 24;
        return static_cast<int>(std::min(numbers[at], most));
    };
    Strut strut{number(0), number(1), number(2), number(3)};
    if (numbers.size() == 12) {
        strut.leftFrom = number(4), strut.leftTo = number(5);
        strut.rightFrom = number(6), strut.rightTo = number(7);
        strut.topFrom = number(8), strut.topTo = number(9);
        strut.bottomFrom = number(10), strut.bottomTo = number(11);
    } else {
        strut.leftTo = strut.rightTo = desktop.height - 1;
        strut.topTo = strut.bottomTo = desktop.width - 1;
    }
    return strut;
}

PixelRectangle freeArea(PixelRectangle monitor, PixelRectangle desktop,
                        const std::vector<Strut>& struts) {
    int leftEdge = monitor.x;
    int rightEdge = right(monitor);
    int topEdge = monitor.y;
    int bottomEdge = bottom(monitor);
    for (const Strut& strut : struts) {
        const auto beside = [&](int from, int to) {
            return to >= monitor.y && from < bottom(monitor);
        };
        const auto above = [&](int from, int to) {
            return to >= monitor.x && from < right(monitor);
        };
        const int fromLeft = strut.left;
        const int fromRight = desktop.width - strut.right;
        const int fromTop = strut.top;
        const int fromBottom = desktop.height - strut.bottom;
        if (strut.left > 0 && fromLeft < right(monitor) && beside(strut.leftFrom, strut.leftTo))
            leftEdge = std::max(leftEdge, fromLeft);
        if (strut.right > 0 && fromRight > monitor.x && beside(strut.rightFrom, strut.rightTo))
            rightEdge = std::min(rightEdge, fromRight);
        if (strut.top > 0 && fromTop < bottom(monitor) && above(strut.topFrom, strut.topTo))
            topEdge = std::max(topEdge, fromTop);
        if (strut.bottom > 0 && fromBottom > monitor.y && above(strut.bottomFrom, strut.bottomTo))
            bottomEdge = std::min(bottomEdge, fromBottom);
    }
    if (leftEdge >= rightEdge || topEdge >= bottomEdge)
        return monitor;
    return {leftEdge, topEdge, rightEdge - leftEdge, bottomEdge - topEdge};
}

std::optional<PixelRectangle> X11Screens::mainWorkArea() const {
    const Monitors found = monitors();
    if (found.all.empty())
        return std::nullopt;
    const bool isOnlyOne = found.all.size() == 1;
    std::optional<std::size_t> chosen;
    if (!isOnlyOne) {
        chosen = withKeyboard(found.all);
        if (!chosen)
            chosen = withPointer(found.all);
    }
    return workArea(found.all[chosen.value_or(found.primary)], isOnlyOne);
}

X11Screens::Monitors X11Screens::monitors() const {
    Monitors found;
    int count = 0;
    const std::unique_ptr<XRRMonitorInfo, MonitorsDeleter> monitors(
        XRRGetMonitors(connection.xlib(), connection.root(), True, &count));
    for (int index = 0; monitors && index < count; ++index) {
        const XRRMonitorInfo& monitor = monitors.get()[index];
        if (monitor.width <= 0 || monitor.height <= 0)
            continue;
        if (monitor.primary)
            found.primary = found.all.size();
        found.all.push_back({monitor.x, monitor.y, monitor.width, monitor.height});
    }
    return found;
}

PixelRectangle X11Screens::desktop() const {
    return {0, 0, connection.width(), connection.height()};
}

// Some programs focus a window of a single pixel. Some window managers focus one outside the screen
// while no program has the keyboard. Neither tells where the user is looking.
std::optional<std::size_t>
X11Screens::withKeyboard(const std::vector<PixelRectangle>& monitors) const {
    Window focused = None;
    int revert = 0;
    XGetInputFocus(connection.xlib(), &focused, &revert);
    if (focused == PointerRoot)
        return std::nullopt;
    for (const Window window : {focused, connection.activeWindow()}) {
        const Window top = connection.toplevelOf(window);
        const PixelRectangle place = top == None ? PixelRectangle() : connection.placeOf(top);
        if (place.width > 1 && place.height > 1)
            if (const auto monitor = mostOf(place, monitors))
                return monitor;
    }
    return std::nullopt;
}

std::optional<std::size_t>
X11Screens::withPointer(const std::vector<PixelRectangle>& monitors) const {
    const auto pointer = window::pointerPlace(connection.xlib(), connection.root());
    return pointer ? mostOf({pointer->x, pointer->y, 1, 1}, monitors) : std::nullopt;
}

PixelRectangle X11Screens::workArea(PixelRectangle monitor, bool isOnlyOne) const {
    for (const PixelRectangle& area : announced(monitor, isOnlyOne))
        if (const PixelRectangle part = intersection(area, monitor); surface(part) > 0)
            return part;
    return freeArea(monitor, desktop(), struts());
}

// With several monitors, _NET_WORKAREA is one rectangle around all of them. It tells nothing about
// a single monitor.
std::vector<PixelRectangle> X11Screens::announced(PixelRectangle monitor, bool isOnlyOne) const {
    const auto current =
        connection.property(connection.root(), "_NET_CURRENT_DESKTOP", XA_CARDINAL);
    const std::size_t workspace = current.empty() ? 0 : current.front();
    if (isOnlyOne) {
        const auto all =
            rectangles(connection.property(connection.root(), "_NET_WORKAREA", XA_CARDINAL));
        return workspace < all.size() ? std::vector{all[workspace]} : std::vector<PixelRectangle>();
    }
    const std::string name = "_GTK_WORKAREAS_D" + std::to_string(workspace);
    auto all = rectangles(connection.property(connection.root(), name.c_str(), XA_CARDINAL));
    std::erase_if(all,
                  [&](const PixelRectangle& area) { return intersection(area, monitor) != area; });
    return all;
}

std::vector<Strut> X11Screens::struts() const {
    std::vector<Strut> found;
    for (const Window client :
         connection.property(connection.root(), "_NET_CLIENT_LIST", XA_WINDOW)) {
        auto numbers = connection.property(client, "_NET_WM_STRUT_PARTIAL", XA_CARDINAL);
        if (numbers.empty())
            numbers = connection.property(client, "_NET_WM_STRUT", XA_CARDINAL);
        if (const auto strut = strutOf(numbers, desktop()))
            found.push_back(*strut);
    }
    return found;
}

} // namespace kelo::panel
