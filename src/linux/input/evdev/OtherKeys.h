#pragma once

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelo::input {

/// Whether this is the code of a key that is not a modifier. A keyboard device does not know the
/// user's layout, so each key counts as what it usually is. The buttons of a mouse, a pad or a
/// joystick in the same device are not keys.
constexpr bool isOtherKey(unsigned code) {
    constexpr std::array<std::uint16_t, 11> modifiers{
        KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT,  KEY_RIGHTALT, KEY_LEFTSHIFT, KEY_RIGHTSHIFT,
        KEY_LEFTMETA, KEY_RIGHTMETA, KEY_CAPSLOCK, KEY_NUMLOCK,  KEY_FN};
    const bool isButton = (code >= BTN_MISC && code < KEY_OK) ||
                          (code >= BTN_DPAD_UP && code <= BTN_DPAD_RIGHT) ||
                          code >= BTN_TRIGGER_HAPPY;
    return code != KEY_RESERVED && !isButton &&
           std::ranges::find(modifiers, code) == modifiers.end();
}

} // namespace kelo::input
