#pragma once

#include "linux/input/source/ModifierSource.h"

#include <string>

namespace kelo::input {

/// Whether the portal on a bus offers global shortcuts. Starts nothing on the bus. Blocks for 2 s
/// at most.
Availability portalAvailability(const std::string& busAddress);

} // namespace kelo::input
