#pragma once

#include "linux/input/source/ModifierSource.h"

#include <chrono>
#include <string>

namespace kelo::input {

/// Whether the portal on a bus offers global shortcuts. Starts nothing on the bus. Blocks until the
/// bus and the portal have answered, for the patience with each at most.
Availability portalAvailability(const std::string& busAddress,
                                std::chrono::milliseconds patience = std::chrono::seconds(5));

} // namespace kelo::input
