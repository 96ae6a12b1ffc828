#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::tray {

/// Where other programs find one of our icons.
struct IconFiles {
    bool areFound = false;
    /// An additional folder with icon themes; empty if the icon is in a standard folder.
    std::string themePath;
};

/// Looks in the "icons" subfolder of each data folder, then in "../share/icons" of the program's
/// folder, because the program may have been unpacked anywhere.
IconFiles findIconFiles(const std::string& iconName, const std::filesystem::path& programFolder,
                        const std::vector<std::string>& dataFolders);

/// The same with the folders of this process.
IconFiles findIconFiles(const std::string& iconName);

} // namespace kelo::tray
