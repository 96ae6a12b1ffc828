#include "e2e/rig/Screen.h"

#include "linux/glib/GObjectPointer.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace kelo::rig {

namespace {

struct XFreeDeleter {
    void operator()(void* memory) const { XFree(memory); }
};

constexpr std::chrono::milliseconds moment{150};
constexpr std::chrono::seconds longestUnrest{3};

// A window may vanish between two questions about it. The answer is then simply empty; Xlib's
// default is to end the program.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

} // namespace

void Screen::Closer::operator()(_XDisplay* opened) const {
    XCloseDisplay(opened);
}

Screen::Screen() : display(XOpenDisplay(nullptr)) {
    if (!display)
        throw std::runtime_error("The X display cannot be opened.");
    XSetErrorHandler(ignoreError);
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    if (!XTestQueryExtension(display.get(), &event, &error, &major, &minor))
        throw std::runtime_error("The X server has no XTEST extension.");
}

Screen::~Screen() = default;

std::vector<unsigned long> Screen::longs(unsigned long window, const char* property) const {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display.get(), window, XInternAtom(display.get(), property, False), 0, 4096,
                       False, AnyPropertyType, &type, &format, &count, &rest, &data);
    const std::unique_ptr<unsigned char, XFreeDeleter> owned(data);
    if (!data || format != 32)
        return {};
    const auto* values = reinterpret_cast<const unsigned long*>(data);
    return {values, values + count};
}

std::string Screen::text(unsigned long window, const char* property) const {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display.get(), window, XInternAtom(display.get(), property, False), 0, 4096,
                       False, AnyPropertyType, &type, &format, &count, &rest, &data);
    const std::unique_ptr<unsigned char, XFreeDeleter> owned(data);
    if (!data || format != 8)
        return {};
    return {reinterpret_cast<const char*>(data), count};
}

bool Screen::hasWindowManager() const {
    return !longs(DefaultRootWindow(display.get()), "_NET_SUPPORTING_WM_CHECK").empty();
}

ScreenWindow Screen::describe(unsigned long window) const {
    ScreenWindow result;
    result.identifier = window;
    result.title = text(window, "_NET_WM_NAME");
    const auto process = longs(window, "_NET_WM_PID");
    result.process = process.empty() ? 0 : static_cast<pid_t>(process.front());
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display.get(), window, &attributes)) {
        result.width = attributes.width;
        result.height = attributes.height;
    }
    Window child = 0;
    XTranslateCoordinates(display.get(), window, DefaultRootWindow(display.get()), 0, 0,
                          &result.origin.x, &result.origin.y, &child);
    return result;
}

std::vector<ScreenWindow> Screen::windows() const {
    std::vector<ScreenWindow> result;
    for (const auto window : longs(DefaultRootWindow(display.get()), "_NET_CLIENT_LIST"))
        result.push_back(describe(window));
    return result;
}

std::string Screen::picture() const {
    std::ostringstream text;
    for (const auto& window : windows())
        text << '"' << window.title << "\" of process " << window.process << ", " << window.width
             << 'x' << window.height << '+' << window.origin.x << '+' << window.origin.y << '\n';
    return text.str();
}

std::optional<ScreenWindow> Screen::activeWindow() const {
    const auto active = longs(DefaultRootWindow(display.get()), "_NET_ACTIVE_WINDOW");
    if (active.empty() || active.front() == 0)
        return std::nullopt;
    return describe(active.front());
}

void Screen::tellWindowManager(unsigned long window, const char* message) const {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display.get(), message, False);
    event.xclient.format = 32;
    // Source 2 is a pager: the manager obeys it even while another window has the focus.
    event.xclient.data.l[0] = 2;
    XSendEvent(display.get(), DefaultRootWindow(display.get()), False,
               SubstructureNotifyMask | SubstructureRedirectMask, &event);
    XFlush(display.get());
}

void Screen::activate(const ScreenWindow& window) const {
    tellWindowManager(window.identifier, "_NET_ACTIVE_WINDOW");
}

void Screen::requestClose(const ScreenWindow& window) const {
    tellWindowManager(window.identifier, "_NET_CLOSE_WINDOW");
}

void Screen::minimize(const ScreenWindow& window) const {
    XIconifyWindow(display.get(), window.identifier, DefaultScreen(display.get()));
    XFlush(display.get());
}

void Screen::click(Point point) const {
    XTestFakeMotionEvent(display.get(), -1, point.x, point.y, CurrentTime);
    XTestFakeButtonEvent(display.get(), 1, True, CurrentTime);
    XTestFakeButtonEvent(display.get(), 1, False, CurrentTime);
    XFlush(display.get());
}

void Screen::key(unsigned code, bool down) const {
    XTestFakeKeyEvent(display.get(), code, down, CurrentTime);
}

void Screen::strike(unsigned long keysym, bool down) const {
    const KeyCode code = XKeysymToKeycode(display.get(), keysym);
    if (code == 0)
        throw std::runtime_error("The keyboard has no key for keysym " + std::to_string(keysym) +
                                 ".");
    key(code, down);
}

void Screen::press(const std::string& name, const std::vector<std::string>& modifiers) const {
    const KeySym keysym = XStringToKeysym(name.c_str());
    if (keysym == NoSymbol)
        throw std::runtime_error("There is no key named " + name + ".");
    for (const auto& modifier : modifiers)
        strike(XStringToKeysym(modifier.c_str()), true);
    strike(keysym, true);
    strike(keysym, false);
    for (auto modifier = modifiers.rbegin(); modifier != modifiers.rend(); ++modifier)
        strike(XStringToKeysym(modifier->c_str()), false);
    XFlush(display.get());
}

void Screen::type(const std::string& text) const {
    for (const unsigned char character : text) {
        // The keysyms of Latin-1 are its code points.
        const KeyCode code = XKeysymToKeycode(display.get(), character);
        if (character >= 0x80 || code == 0)
            throw std::runtime_error("The keyboard has no key for a character of the text.");
        const bool shifted = XkbKeycodeToKeysym(display.get(), code, 0, 0) != character;
        if (shifted)
            strike(XK_Shift_L, true);
        key(code, true);
        key(code, false);
        if (shifted)
            strike(XK_Shift_L, false);
    }
    XFlush(display.get());
}

void Screen::ImageDeleter::operator()(_XImage* image) const {
    XDestroyImage(image);
}

std::unique_ptr<_XImage, Screen::ImageDeleter> Screen::read() const {
    const int number = DefaultScreen(display.get());
    std::unique_ptr<_XImage, ImageDeleter> image(
        XGetImage(display.get(), RootWindow(display.get(), number), 0, 0,
                  static_cast<unsigned>(DisplayWidth(display.get(), number)),
                  static_cast<unsigned>(DisplayHeight(display.get(), number)), AllPlanes, ZPixmap));
    if (!image)
        throw std::runtime_error("The screen cannot be read.");
    return image;
}

bool Screen::isDrawn(Point corner, int width, int height) const {
    const auto image = read();
    const int right = std::min(corner.x + width, image->width);
    const int bottom = std::min(corner.y + height, image->height);
    std::optional<unsigned long> first;
    for (int y = std::max(corner.y, 0); y < bottom; ++y) {
        for (int x = std::max(corner.x, 0); x < right; ++x) {
            const unsigned long colour = XGetPixel(image.get(), x, y);
            if (colour != first.value_or(colour))
                return true;
            first = colour;
        }
    }
    return false;
}

std::unique_ptr<_XImage, Screen::ImageDeleter> Screen::readSettled() const {
    const auto end = std::chrono::steady_clock::now() + longestUnrest;
    auto image = read();
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(moment);
        auto next = read();
        const auto size = static_cast<std::size_t>(image->bytes_per_line) *
                          static_cast<std::size_t>(image->height);
        const bool still = std::memcmp(image->data, next->data, size) == 0;
        image = std::move(next);
        if (still)
            break;
    }
    return image;
}

void Screen::capture(const std::filesystem::path& file) const {
    const auto image = readSettled();
    const int width = image->width;
    const int height = image->height;
    const auto picture = desktop::GObjectPointer<GdkPixbuf>::adopt(
        gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height));
    const auto rowLength = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(picture.get()));
    guchar* pixels = gdk_pixbuf_get_pixels(picture.get());
    for (int y = 0; y < height; ++y) {
        guchar* pixel = pixels + static_cast<std::size_t>(y) * rowLength;
        for (int x = 0; x < width; ++x) {
            const unsigned long colour = XGetPixel(image.get(), x, y);
            *pixel++ = static_cast<guchar>(colour >> 16);
            *pixel++ = static_cast<guchar>(colour >> 8);
            *pixel++ = static_cast<guchar>(colour);
        }
    }
    std::filesystem::create_directories(file.parent_path());
    GError* error = nullptr;
    if (!gdk_pixbuf_save(picture.get(), file.c_str(), "png", &error, nullptr)) {
        const desktop::GErrorPointer owned(error);
        throw std::runtime_error("The picture of the screen cannot be written: " +
                                 std::string(owned ? owned->message : "unknown error"));
    }
}

} // namespace kelo::rig
