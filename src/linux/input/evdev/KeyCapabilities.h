#pragma once

#include <filesystem>
#include <string>

namespace kelo::input {

/// Whether the system's own description of a device (in /sys/class/input, or another folder laid
/// out like it) says that it has none of the keys of HeldKeys. It can be read by everybody, and
/// spares opening the mice and buttons: the kernel takes tens of milliseconds to close each again.
/// False where there is no description.
bool lacksHeldKeys(const std::filesystem::path& descriptions, const std::string& device);

} // namespace kelo::input
