#pragma once

#include <filesystem>

namespace kelo::bundle {

/// Path of the running program from the kernel, which follows when the folders above it are moved.
/// Empty if it is unknown.
std::filesystem::path programPath();

/// The folder with the program's other installed files: the parent of the program's "bin" folder. A
/// program in any other folder is in a build tree, and its own folder is returned.
std::filesystem::path installationPrefix(const std::filesystem::path& program);

/// Path of the information dictionary below that folder.
std::filesystem::path informationPath(const std::filesystem::path& prefix);

} // namespace kelo::bundle
