#pragma once

#include "platform/EventMonitors.h"

#include <linux/input-event-codes.h>

#include <array>
#include <cstdint>

namespace kelo::input {

/// The keys of one keyboard that are watched, and which of them are down.
///
/// A keyboard device does not know the user's layout. On many layouts, the right Alt key is AltGr,
/// which is never Option. So only the left Alt key is watched.
struct HeldKeys {
    static constexpr std::array<std::uint16_t, 3> codes{KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT};

    bool leftControl = false;
    bool rightControl = false;
    bool leftAlt = false;

    /// Ignores codes that are not in `codes`.
    void set(std::uint16_t code, bool down) {
        if (code == KEY_LEFTCTRL)
            leftControl = down;
        else if (code == KEY_RIGHTCTRL)
            rightControl = down;
        else if (code == KEY_LEFTALT)
            leftAlt = down;
    }

    platform::ModifierFlags flags() const {
        return (leftControl || rightControl ? platform::modifier::control : 0) |
               (leftAlt ? platform::modifier::option : 0);
    }

    /// The keys that are down in both.
    HeldKeys operator&(const HeldKeys& other) const {
        return {leftControl && other.leftControl, rightControl && other.rightControl,
                leftAlt && other.leftAlt};
    }
    /// The keys that are down here and not there.
    HeldKeys without(const HeldKeys& other) const {
        return {leftControl && !other.leftControl, rightControl && !other.rightControl,
                leftAlt && !other.leftAlt};
    }

    bool operator==(const HeldKeys&) const = default;
};

} // namespace kelo::input
