#pragma once

#include "platform/EventMonitors.h"

namespace kelo::input {

/// Converts the toolkit's modifiers (GdkModifierType) to the seam's flags.
platform::ModifierFlags flagsFromGdk(unsigned state);

} // namespace kelo::input
