#pragma once

#include "platform/EventMonitors.h"

struct _XDisplay;

namespace kelo::input {

/// Which of the eight modifiers of an X keyboard its Option and Command keys set. Shift, Lock and
/// Control are always the same ones; the others mean what the keyboard's layout says.
struct XkbModifierMap {
    unsigned option = 0;
    unsigned command = 0;

    /// The seam's flags for a set of real modifiers.
    platform::ModifierFlags flags(unsigned realModifiers) const;
};

/// As the core keyboard is laid out now. One round trip.
XkbModifierMap readXkbModifierMap(_XDisplay* display);

} // namespace kelo::input
