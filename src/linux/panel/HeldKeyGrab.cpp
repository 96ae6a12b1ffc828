#include "linux/panel/HeldKeyGrab.h"

#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>
#include <gdk/gdk.h>

#include <array>
#include <utility>

namespace kelo::panel {

HeldKeyGrab::~HeldKeyGrab() {
    end();
}

// The toolkit's kind of grab, so that the search for a lock screen knows it as our own.
void HeldKeyGrab::begin() {
    Display* const x = connection.xlib();
    const KeyCode escape = XKeysymToKeycode(x, XK_Escape);
    std::array<char, 32> down{};
    XQueryKeymap(x, down.data());
    const auto byte = static_cast<unsigned char>(down[escape / 8u]);
    GdkSeat* const seat = gdk_display_get_default_seat(connection.display());
    GdkDevice* const keyboard = seat ? gdk_seat_get_keyboard(seat) : nullptr;
    if (held || escape == 0 || (byte >> escape % 8 & 1) == 0 || !keyboard)
        return;
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    XISetMask(bits.data(), XI_KeyRelease);
    const int device = window::xinputDevice(keyboard);
    XIEventMask mask{device, static_cast<int>(bits.size()), bits.data()};
    if (XIGrabDevice(x, device, connection.root(), CurrentTime, None, XIGrabModeAsync,
                     XIGrabModeAsync, False, &mask) != XIGrabSuccess)
        return;
    held = Held{escape, device};
    // The release may never come, for instance if the keyboard is unplugged.
    limit.after(std::chrono::seconds(2), [this] { end(); });
}

void HeldKeyGrab::handle(const XEvent& event) {
    if (!held || event.type != GenericEvent || event.xcookie.evtype != XI_KeyRelease ||
        !event.xcookie.data)
        return;
    if (static_cast<const XIDeviceEvent*>(event.xcookie.data)->detail == held->key)
        end();
}

void HeldKeyGrab::end() {
    limit.cancel();
    if (const auto ended = std::exchange(held, std::nullopt)) {
        XIUngrabDevice(connection.xlib(), ended->device, CurrentTime);
        XFlush(connection.xlib());
    }
}

} // namespace kelo::panel
