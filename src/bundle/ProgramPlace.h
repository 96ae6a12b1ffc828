#pragma once

#include <filesystem>

namespace kelo::bundle {

/// The file of the running program, as the kernel knows it: it stays right when the folders above
/// it are moved. Empty when the kernel does not say.
std::filesystem::path programPath();

/// The folder that the other installed files are found under: the one above the program's "bin". A
/// program that stands in no "bin" is one in a build tree, and its own folder is the one.
std::filesystem::path installationPrefix(const std::filesystem::path& program);

/// Where a program's information dictionary is.
std::filesystem::path informationPath(const std::filesystem::path& prefix);

} // namespace kelo::bundle
