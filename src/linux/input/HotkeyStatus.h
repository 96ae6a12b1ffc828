#pragma once

#include "linux/input/source/ModifierSource.h"

#include <string>
#include <vector>

namespace kelo::input {

struct SourceStatus {
    std::string name;
    Availability availability;
};

/// All sources that the hotkey can use on this desktop, best first. Needs no window and leaves
/// nothing running.
std::vector<SourceStatus> hotkeyStatus();

} // namespace kelo::input
