#pragma once

#include "platform/EventMonitors.h"

namespace kelo::desktop {

/// The seam's flags for a set of the toolkit's (GdkModifierType).
platform::ModifierFlags flagsFromGdk(unsigned state);

} // namespace kelo::desktop
