#pragma once

#include "linux/integration/MadeFiles.h"

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::integration {

/// What a copy in the user's menu consists of: the entry, the icons and the file for the session
/// bus, by their paths in a data folder. Taken from the tree, and made to name the program at its
/// place. Nothing if the tree holds no entry: then it was not unpacked from an archive.
std::optional<MadeFiles::Contents> menuFiles(const std::filesystem::path& tree,
                                             const std::filesystem::path& program);

/// Path of the entry in a data folder.
std::string entryPath();

/// Whether the files can name it: it is UTF-8 in one line.
bool canBeNamed(const std::filesystem::path& program);

} // namespace kelo::integration
