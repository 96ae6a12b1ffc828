#pragma once

#include <filesystem>
#include <string>

namespace kelo::input {

/// Whether the kernel's description of a device says that it has none of the keys of HeldKeys.
/// False if there is no description. Everybody may read descriptions. They save opening mice and
/// buttons, each of which takes the kernel tens of milliseconds to close. descriptions:
/// /sys/class/input or a folder with the same layout.
bool lacksHeldKeys(const std::filesystem::path& descriptions, const std::string& device);

} // namespace kelo::input
