#pragma once

#include "platform/EventMonitors.h"

#include <bitset>

struct _XDisplay;

namespace kelo::input {

/// What the keys of an X keyboard mean as modifiers: which of the eight real modifiers its Option
/// and Command keys set, and which keys are modifiers at all. Shift, Lock and Control are fixed.
/// The layout decides what the others mean.
struct XkbModifierMap {
    unsigned option = 0;
    unsigned command = 0;
    /// By key code: keys that set a modifier in any group, or that switch levels or groups.
    std::bitset<256> modifierKeys;

    /// Converts real modifiers to the seam's flags.
    platform::ModifierFlags flags(unsigned realModifiers) const;
    /// False for codes outside 0 to 255.
    bool isModifierKey(int code) const;
};

/// Reads the map from the core keyboard's current layout. One round trip.
XkbModifierMap readXkbModifierMap(_XDisplay* display);

} // namespace kelo::input
