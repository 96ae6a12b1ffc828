#include "popup/Floor.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <poll.h>
#include <time.h>

#include <stdexcept>

namespace kelo::bench {

namespace {

constexpr unsigned long windowColor = 0x2F5D50;
constexpr unsigned chord = ControlMask | Mod1Mask;
constexpr std::chrono::milliseconds holdThreshold{250};
/// How soon it sees that it is to end.
constexpr std::chrono::milliseconds longestWait{200};

timespec toTimespec(std::chrono::nanoseconds duration) {
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(duration);
    return {static_cast<time_t>(whole.count()), static_cast<long>((duration - whole).count())};
}

} // namespace

Floor::Floor(int x, int y, int width, int height) {
    Display* const display = own.display();
    int opcode = 0;
    int error = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    if (!XkbQueryExtension(display, &opcode, &firstEvent, &error, &major, &minor))
        throw std::runtime_error("The X server has no XKB extension.");
    XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, XkbModifierStateMask,
                          XkbModifierStateMask);
    XSetWindowAttributes attributes{};
    attributes.override_redirect = True;
    attributes.background_pixel = windowColor;
    window = XCreateWindow(display, own.root(), x, y, static_cast<unsigned>(width),
                           static_cast<unsigned>(height), 0, CopyFromParent, InputOutput,
                           CopyFromParent, CWOverrideRedirect | CWBackPixel, &attributes);
    own.sync();
    thread = std::thread([this] { run(); });
}

Floor::~Floor() {
    ending = true;
    thread.join();
    XDestroyWindow(own.display(), window);
    own.sync();
}

void Floor::run() {
    while (!ending) {
        takeEvents();
        std::chrono::nanoseconds wait = longestWait;
        if (holdAt)
            wait = std::max(std::chrono::nanoseconds(0),
                            std::chrono::nanoseconds(*holdAt - Clock::now()));
        const timespec limit = toTimespec(wait);
        pollfd connection{own.descriptor(), POLLIN, 0};
        ppoll(&connection, 1, &limit, nullptr);
        if (holdAt && Clock::now() >= *holdAt) {
            holdAt.reset();
            show();
        }
    }
}

void Floor::takeEvents() {
    while (XPending(own.display()) > 0) {
        XEvent event{};
        XNextEvent(own.display(), &event);
        if (event.type != firstEvent)
            continue;
        const auto& keyboard = reinterpret_cast<const XkbEvent&>(event);
        if (keyboard.any.xkb_type == XkbStateNotify)
            modifiersChanged(keyboard.state.mods);
    }
}

void Floor::modifiersChanged(unsigned modifiers) {
    const bool down = (modifiers & chord) == chord;
    if (down == isDown)
        return;
    isDown = down;
    if (down)
        holdAt = Clock::now() + holdThreshold;
    else if (holdAt) {
        holdAt.reset();
        toggle();
    }
}

void Floor::toggle() {
    if (!isShown)
        return show();
    isShown = false;
    XUnmapWindow(own.display(), window);
    own.flush();
}

void Floor::show() {
    isShown = true;
    XMapRaised(own.display(), window);
    own.flush();
}

} // namespace kelo::bench
