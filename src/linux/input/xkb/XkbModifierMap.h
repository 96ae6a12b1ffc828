#pragma once

#include "platform/EventMonitors.h"

struct _XDisplay;

namespace kelo::input {

/// Which of the eight real modifiers of an X keyboard its Option and Command keys set. Shift, Lock
/// and Control are fixed. The layout decides what the others mean.
struct XkbModifierMap {
    unsigned option = 0;
    unsigned command = 0;

    /// Converts real modifiers to the seam's flags.
    platform::ModifierFlags flags(unsigned realModifiers) const;
};

/// Reads the map from the core keyboard's current layout. One round trip.
XkbModifierMap readXkbModifierMap(_XDisplay* display);

} // namespace kelo::input
