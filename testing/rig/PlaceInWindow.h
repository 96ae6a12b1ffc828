#pragma once

#include "testing/rig/Accessible.h"

namespace kelo::rig {

/// Where an object of a toolkit's window is, in pixels from the upper left corner of what is inside
/// the window's frame: near enough for a click on its middle.
Extents placeInWindow(const AccessibilityBus& bus, const Accessible& window,
                      const Accessible& object);

} // namespace kelo::rig
