#pragma once

#include "platform/EventMonitors.h"

namespace kelo::input {

/// The seam's flags for a set of the toolkit's (GdkModifierType).
platform::ModifierFlags flagsFromGdk(unsigned state);

} // namespace kelo::input
