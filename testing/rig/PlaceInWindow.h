#pragma once

#include "testing/rig/Accessible.h"

namespace kelo::rig {

/// Where an object of a toolkit's window really is, in pixels from the upper left corner of what is
/// inside the window's frame. What the object itself says may be wrong by the padding of everything
/// around it, so the window is asked as well, which object it has at a point.
Extents placeInWindow(const AccessibilityBus& bus, const Accessible& window,
                      const Accessible& object);

} // namespace kelo::rig
