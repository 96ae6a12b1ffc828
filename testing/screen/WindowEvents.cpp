#include "testing/screen/WindowEvents.h"

#include <X11/Xlib.h>
#include <poll.h>

#include <algorithm>

namespace kelo::screen {

WindowEvents::WindowEvents() {
    XSelectInput(own.display(), own.root(), SubstructureNotifyMask);
    own.sync();
}

void WindowEvents::forget() const {
    XSync(own.display(), True);
}

std::optional<WindowEvent> WindowEvents::pending() const {
    while (XPending(own.display()) > 0) {
        XEvent event{};
        XNextEvent(own.display(), &event);
        const auto now = Clock::now();
        switch (event.type) {
        case CreateNotify:
            return WindowEvent{WindowEvent::Kind::created, event.xcreatewindow.window, now};
        case MapNotify:
            return WindowEvent{WindowEvent::Kind::mapped, event.xmap.window, now};
        case UnmapNotify:
            return WindowEvent{WindowEvent::Kind::unmapped, event.xunmap.window, now};
        case DestroyNotify:
            return WindowEvent{WindowEvent::Kind::destroyed, event.xdestroywindow.window, now};
        default:
            break;
        }
    }
    return std::nullopt;
}

std::optional<WindowEvent> WindowEvents::next(Clock::time_point deadline) const {
    while (true) {
        if (const auto event = pending())
            return event;
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return std::nullopt;
        pollfd connection{own.descriptor(), POLLIN, 0};
        poll(&connection, 1, static_cast<int>(left.count()));
    }
}

std::optional<WindowEvent>
WindowEvents::await(const std::function<bool(const WindowEvent&)>& condition,
                    Clock::time_point deadline) const {
    while (const auto event = next(deadline)) {
        if (condition(*event))
            return event;
    }
    return std::nullopt;
}

} // namespace kelo::screen
