#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::tray {

/// Where another program can find one of our icons.
struct IconFiles {
    bool areFound = false;
    /// The folder with icon themes to look in; empty when the icon is where every program looks.
    std::string themePath;
};

/// Looks in the folders that every program knows (each may have an "icons" folder), and then beside
/// the program, which may have been unpacked anywhere: in share/icons next to the folder that it
/// is in.
IconFiles findIconFiles(const std::string& iconName, const std::filesystem::path& programFolder,
                        const std::vector<std::string>& dataFolders);

/// The same for this process.
IconFiles findIconFiles(const std::string& iconName);

} // namespace kelo::tray
