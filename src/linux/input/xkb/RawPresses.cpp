#include "linux/input/xkb/RawPresses.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <array>

namespace kelo::input {

std::optional<RawPresses> RawPresses::of(_XDisplay* display) {
    int opcode = 0;
    int firstEvent = 0;
    int firstError = 0;
    if (!XQueryExtension(display, "XInputExtension", &opcode, &firstEvent, &firstError))
        return std::nullopt;
    // Since 2.1, the server sends these events also while another program has a grab. That is when
    // a desktop's own shortcuts are pressed.
    int major = 2;
    int minor = 1;
    if (XIQueryVersion(display, &major, &minor) != Success || major < 2 ||
        (major == 2 && minor < 1))
        return std::nullopt;
    return RawPresses(display, opcode);
}

void RawPresses::listen(bool on) const {
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    if (on) {
        XISetMask(bits.data(), XI_RawKeyPress);
        XISetMask(bits.data(), XI_RawButtonPress);
    }
    XIEventMask mask{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
    XFlush(display);
}

bool RawPresses::isOtherPress(_XEvent& event, const XkbModifierMap& map) const {
    if (event.type != GenericEvent || event.xcookie.extension != opcode ||
        !XGetEventData(display, &event.xcookie))
        return false;
    const auto& raw = *static_cast<const XIRawEvent*>(event.xcookie.data);
    const bool other = raw.evtype == XI_RawButtonPress ||
                       (raw.evtype == XI_RawKeyPress && !map.isModifierKey(raw.detail));
    XFreeEventData(display, &event.xcookie);
    return other;
}

bool isOtherKeyDown(_XDisplay* display, const XkbModifierMap& map) {
    std::array<char, 32> down{};
    XQueryKeymap(display, down.data());
    for (int key = 0; key < 256; ++key) {
        const auto bits = static_cast<unsigned char>(down[static_cast<std::size_t>(key) / 8]);
        if ((bits >> (key % 8) & 1) != 0 && !map.isModifierKey(key))
            return true;
    }
    return false;
}

} // namespace kelo::input
