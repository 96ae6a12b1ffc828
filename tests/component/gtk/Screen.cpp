#include "component/gtk/Screen.h"

#include <gdk/x11/gdkx.h>

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <stdexcept>

namespace kelo::tests {

namespace {

struct DestroyImage {
    void operator()(XImage* image) const { XDestroyImage(image); }
};
using Image = std::unique_ptr<XImage, DestroyImage>;

Color colorIn(XImage& image, int x, int y) {
    const unsigned long pixel = XGetPixel(&image, x, y);
    return {static_cast<int>(pixel >> 16 & 0xff), static_cast<int>(pixel >> 8 & 0xff),
            static_cast<int>(pixel & 0xff)};
}

} // namespace

void Screen::Close::operator()(_XDisplay* display) const {
    XCloseDisplay(display);
}

Screen::Screen() : display(XOpenDisplay(nullptr)) {
    if (!display)
        throw std::runtime_error("no display");
}

void Screen::key(unsigned symbol, bool down) {
    XTestFakeKeyEvent(display.get(), XKeysymToKeycode(display.get(), symbol), down, CurrentTime);
}

void Screen::press(unsigned symbol, std::initializer_list<unsigned> modifiers) {
    for (const unsigned modifier : modifiers)
        key(modifier, true);
    key(symbol, true);
    key(symbol, false);
    for (const unsigned modifier : modifiers)
        key(modifier, false);
    XSync(display.get(), False);
}

void Screen::type(const std::string& text) {
    for (const char character : text)
        press(static_cast<unsigned char>(character));
}

void Screen::click(int x, int y) {
    XTestFakeMotionEvent(display.get(), -1, x, y, CurrentTime);
    XTestFakeButtonEvent(display.get(), 1, True, CurrentTime);
    XTestFakeButtonEvent(display.get(), 1, False, CurrentTime);
    XSync(display.get(), False);
}

void Screen::hold(int x, int y, unsigned button, unsigned modifier) {
    moveTo(x, y);
    key(modifier, true);
    XTestFakeButtonEvent(display.get(), button, True, CurrentTime);
    XSync(display.get(), False);
}

void Screen::moveTo(int x, int y) {
    XTestFakeMotionEvent(display.get(), -1, x, y, CurrentTime);
    XSync(display.get(), False);
}

void Screen::letGo(unsigned button, unsigned modifier) {
    XTestFakeButtonEvent(display.get(), button, False, CurrentTime);
    key(modifier, false);
    XSync(display.get(), False);
}

Color Screen::colorAt(int x, int y) {
    const Image image(
        XGetImage(display.get(), DefaultRootWindow(display.get()), x, y, 1, 1, AllPlanes, ZPixmap));
    return image ? colorIn(*image, 0, 0) : Color{};
}

int Screen::width() const {
    return DisplayWidth(display.get(), DefaultScreen(display.get()));
}

int Screen::height() const {
    return DisplayHeight(display.get(), DefaultScreen(display.get()));
}

std::pair<int, int> Screen::origin(GdkSurface* surface) {
    int x = 0;
    int y = 0;
    Window child = 0;
    XTranslateCoordinates(display.get(), gdk_x11_surface_get_xid(surface),
                          DefaultRootWindow(display.get()), 0, 0, &x, &y, &child);
    return {x, y};
}

std::vector<int> Screen::iconSizes(GdkSurface* surface) {
    constexpr long longest = 1 << 20;
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display.get(), gdk_x11_surface_get_xid(surface),
                       XInternAtom(display.get(), "_NET_WM_ICON", False), 0, longest, False,
                       XA_CARDINAL, &type, &format, &count, &rest, &data);
    const std::unique_ptr<unsigned char, int (*)(void*)> owned(data, XFree);
    // Xlib gives each 32 bit value in a long: width, height, then the picture's points.
    const auto* values = reinterpret_cast<const unsigned long*>(data);
    std::vector<int> sizes;
    for (unsigned long at = 0; at + 2 < count; at += 2 + values[at] * values[at + 1])
        sizes.push_back(static_cast<int>(values[at]));
    return sizes;
}

void Screen::save(const std::string& path) {
    const Image image(XGetImage(display.get(), DefaultRootWindow(display.get()), 0, 0,
                                static_cast<unsigned>(width()), static_cast<unsigned>(height()),
                                AllPlanes, ZPixmap));
    auto surface =
        Cairo::ImageSurface::create(Cairo::Surface::Format::RGB24, image->width, image->height);
    for (int y = 0; y < image->height; ++y) {
        auto* row =
            reinterpret_cast<std::uint32_t*>(surface->get_data() + y * surface->get_stride());
        for (int x = 0; x < image->width; ++x)
            row[x] = static_cast<std::uint32_t>(XGetPixel(image.get(), x, y) & 0xffffff);
    }
    surface->mark_dirty();
    surface->write_to_png(path);
}

} // namespace kelo::tests
