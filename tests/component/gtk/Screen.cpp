#include "component/gtk/Screen.h"

#include "testing/screen/Picture.h"

#include <gdk/x11/gdkx.h>

#include <X11/Xutil.h>

namespace kelo::tests {

namespace {

Color asColor(std::uint32_t value) {
    return {static_cast<int>(value >> 16), static_cast<int>(value >> 8 & 0xff),
            static_cast<int>(value & 0xff)};
}

} // namespace

void Screen::press(unsigned key, const std::vector<screen::KeySymbol>& modifiers) {
    keyboard.press(key, modifiers);
    connection.sync();
}

void Screen::keyDown(unsigned key) {
    keyboard.down(key);
    connection.sync();
}

void Screen::keyUp(unsigned key) {
    keyboard.up(key);
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
    return asColor(screen::colorAt(connection, x, y));
}

std::vector<Color> Screen::colorsIn(int x, int y, int width, int height) {
    const screen::Picture picture(connection, x, y, width, height);
    std::vector<Color> colors;
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column)
            colors.push_back(asColor(picture.color(column, row)));
    return colors;
}

std::pair<int, int> Screen::origin(GdkSurface* surface) {
    const auto corner = windows.describe(gdk_x11_surface_get_xid(surface)).origin;
    return {corner.x, corner.y};
}

Screen::SizeLimits Screen::sizeLimits(GdkSurface* surface) {
    const auto hints = windows.numbers(gdk_x11_surface_get_xid(surface), "WM_NORMAL_HINTS");
    if (hints.size() < 9)
        return {};
    // Flags, four numbers that are out of use, then the limits, of which the flags say which hold.
    const auto limit = [&hints](long flag, std::size_t at) {
        return hints[0] & static_cast<unsigned long>(flag) ? static_cast<int>(hints[at]) : 0;
    };
    return {limit(PMinSize, 5), limit(PMinSize, 6), limit(PMaxSize, 7), limit(PMaxSize, 8)};
}

std::string Screen::programName(GdkSurface* surface) {
    // Two names, each with its end; the first is the program's.
    return windows.text(gdk_x11_surface_get_xid(surface), "WM_CLASS").c_str();
}

std::string Screen::activationToken(GdkSurface* surface) {
    return windows.text(gdk_x11_surface_get_xid(surface), "_NET_STARTUP_ID");
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
