#pragma once

#include <filesystem>

namespace kelo::bundle {

/// Path by which this process's program is started, from what the kernel says, which follows when
/// the folders above it are moved. For the program itself that is the command in front of it,
/// "kelo". Empty if it is unknown.
std::filesystem::path programPath();

/// The program itself, which the command "kelo" below this prefix runs. Nobody else starts it.
std::filesystem::path programBehind(const std::filesystem::path& prefix);

/// The folder with the program's other installed files: the parent of the program's "bin" folder. A
/// program in any other folder is in a build tree, and its own folder is returned.
std::filesystem::path installationPrefix(const std::filesystem::path& program);

/// Path of the information dictionary below that folder.
std::filesystem::path informationPath(const std::filesystem::path& prefix);

} // namespace kelo::bundle
