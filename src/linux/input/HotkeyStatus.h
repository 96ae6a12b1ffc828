#pragma once

#include "linux/input/source/ModifierSource.h"

#include <string>
#include <vector>

namespace kelo::input {

struct SourceStatus {
    std::string name;
    Availability availability;
};

/// Every source of the hotkey that this program knows, in the order in which it would use them on
/// this desktop. Needs no window and leaves nothing running.
std::vector<SourceStatus> hotkeyStatus();

} // namespace kelo::input
