#include "component/gtk/Screen.h"

#include "testing/screen/Picture.h"

#include <gdk/x11/gdkx.h>

namespace kelo::tests {

void Screen::press(unsigned key, const std::vector<screen::KeySymbol>& modifiers) {
    keyboard.press(key, modifiers);
    connection.sync();
}

void Screen::type(const std::string& text) {
    keyboard.type(text);
    connection.sync();
}

void Screen::click(int x, int y) {
    pointer.click({x, y});
    connection.sync();
}

void Screen::hold(int x, int y, unsigned button, unsigned modifier) {
    pointer.moveTo({x, y});
    keyboard.down(modifier);
    pointer.down(button);
    connection.sync();
}

void Screen::moveTo(int x, int y) {
    pointer.moveTo({x, y});
    connection.sync();
}

void Screen::letGo(unsigned button, unsigned modifier) {
    pointer.up(button);
    keyboard.up(modifier);
    connection.sync();
}

Color Screen::colorAt(int x, int y) {
    const std::uint32_t color = screen::colorAt(connection, x, y);
    return {static_cast<int>(color >> 16), static_cast<int>(color >> 8 & 0xff),
            static_cast<int>(color & 0xff)};
}

std::pair<int, int> Screen::origin(GdkSurface* surface) {
    const auto corner = windows.describe(gdk_x11_surface_get_xid(surface)).origin;
    return {corner.x, corner.y};
}

std::vector<int> Screen::iconSizes(GdkSurface* surface) {
    // Each picture: width, height, then its points.
    const auto values = windows.numbers(gdk_x11_surface_get_xid(surface), "_NET_WM_ICON");
    std::vector<int> sizes;
    for (std::size_t at = 0; at + 2 < values.size(); at += 2 + values[at] * values[at + 1])
        sizes.push_back(static_cast<int>(values[at]));
    return sizes;
}

void Screen::save(const std::string& path) {
    screen::Picture(connection).save(path);
}

} // namespace kelo::tests
