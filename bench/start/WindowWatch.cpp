#include "start/WindowWatch.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace kelo::bench {

namespace {

constexpr int smallestWindow = 400;
constexpr std::chrono::milliseconds lookEvery{1};

struct ImageDeleter {
    void operator()(XImage* image) const { XDestroyImage(image); }
};
using ImagePointer = std::unique_ptr<XImage, ImageDeleter>;

ImagePointer read(Display* display, int x, int y, unsigned width, unsigned height) {
    return ImagePointer(
        XGetImage(display, DefaultRootWindow(display), x, y, width, height, AllPlanes, ZPixmap));
}

int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

} // namespace

void WindowWatch::Closer::operator()(_XDisplay* opened) const {
    XCloseDisplay(opened);
}

WindowWatch::WindowWatch() : display(XOpenDisplay(nullptr)) {
    if (!display)
        throw std::runtime_error("The X display cannot be opened.");
    XSetErrorHandler(ignoreError);
    XSelectInput(display.get(), DefaultRootWindow(display.get()), SubstructureNotifyMask);
    XSync(display.get(), False);
}

WindowWatch::~WindowWatch() = default;

void WindowWatch::reset() const {
    XSync(display.get(), True);
}

std::optional<WindowWatch::Clock::time_point>
WindowWatch::awaitMapped(Clock::time_point deadline) const {
    while (true) {
        while (XPending(display.get()) > 0) {
            XEvent event;
            XNextEvent(display.get(), &event);
            if (event.type != MapNotify)
                continue;
            const auto now = Clock::now();
            XWindowAttributes attributes{};
            if (XGetWindowAttributes(display.get(), event.xmap.window, &attributes) &&
                attributes.width >= smallestWindow && attributes.height >= smallestWindow)
                return now;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return std::nullopt;
        pollfd connection{ConnectionNumber(display.get()), POLLIN, 0};
        poll(&connection, 1, static_cast<int>(left.count()));
    }
}

std::optional<WindowWatch::Clock::time_point>
WindowWatch::awaitColour(Pixel pixel, std::uint32_t colour, Clock::time_point deadline) const {
    while (Clock::now() < deadline) {
        const ImagePointer image = read(display.get(), pixel.x, pixel.y, 1, 1);
        if (image && (XGetPixel(image.get(), 0, 0) & 0xFFFFFF) == colour)
            return Clock::now();
        std::this_thread::sleep_for(lookEvery);
    }
    return std::nullopt;
}

std::optional<Pixel> WindowWatch::awaitArea(std::uint32_t colour, std::size_t least,
                                            Clock::time_point deadline) const {
    const int width = DisplayWidth(display.get(), DefaultScreen(display.get()));
    const int height = DisplayHeight(display.get(), DefaultScreen(display.get()));
    while (Clock::now() < deadline) {
        const ImagePointer image =
            read(display.get(), 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height));
        std::vector<Pixel> found;
        for (int y = 0; image && y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if ((XGetPixel(image.get(), x, y) & 0xFFFFFF) == colour)
                    found.push_back({x, y});
            }
        }
        if (found.size() >= least)
            return found[found.size() / 2];
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return std::nullopt;
}

} // namespace kelo::bench
