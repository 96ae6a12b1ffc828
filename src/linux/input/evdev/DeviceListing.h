#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::input {

/// The device nodes of a folder like /dev/input.
struct DeviceListing {
    /// In the order of their numbers.
    std::vector<std::string> names;
    /// The user may not read the folder.
    bool refused = false;
};

DeviceListing listDevices(const std::filesystem::path& folder);

/// Whether this is one of the kernel's own names. Subfolders hold other names for the same devices.
bool isDeviceName(std::string_view name);

} // namespace kelo::input
