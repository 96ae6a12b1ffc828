#include "linux/panel/HeldKeyGrab.h"

#include <X11/keysym.h>

#include <array>
#include <utility>

namespace kelo::panel {

HeldKeyGrab::~HeldKeyGrab() {
    end();
}

void HeldKeyGrab::begin() {
    Display* const x = connection.xlib();
    const KeyCode escape = XKeysymToKeycode(x, XK_Escape);
    std::array<char, 32> down{};
    XQueryKeymap(x, down.data());
    const auto byte = static_cast<unsigned char>(down[escape / 8u]);
    if (held || escape == 0 || (byte >> escape % 8 & 1) == 0)
        return;
    if (XGrabKeyboard(x, connection.root(), False, GrabModeAsync, GrabModeAsync, CurrentTime) !=
        GrabSuccess)
        return;
    held = escape;
    // The release may never come, for instance if the keyboard is unplugged.
    constexpr guint milliseconds = 2000;
    limit = g_timeout_add(
        milliseconds,
        [](gpointer self) -> gboolean {
            auto& grab = *static_cast<HeldKeyGrab*>(self);
            grab.limit = 0;
            grab.end();
            return G_SOURCE_REMOVE;
        },
        this);
}

void HeldKeyGrab::handle(const XEvent& event) {
    if (held && event.type == KeyRelease && event.xkey.keycode == *held)
        end();
}

void HeldKeyGrab::end() {
    if (limit != 0)
        g_source_remove(std::exchange(limit, 0));
    if (!held)
        return;
    held.reset();
    XUngrabKeyboard(connection.xlib(), CurrentTime);
    XFlush(connection.xlib());
}

} // namespace kelo::panel
