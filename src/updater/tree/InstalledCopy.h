#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::updater {

enum class CopyOwner {
    user,           ///< a tree below the user's home that contains nothing else
    packageManager, ///< below /usr, but not /usr/local
    unknown,        ///< anything else: a build tree, /opt, a folder shared with other programs
};

/// The running copy of the program.
struct InstalledCopy {
    CopyOwner owner = CopyOwner::unknown;
    /// The folder above bin.
    std::filesystem::path root;
    /// A file, relative to the root, that is all that keeps the copy from being the user's own
    /// tree; empty if there is none.
    std::string strayFile = {};
};

/// Reads a few dozen names from the disk at most. Changes nothing.
InstalledCopy findInstalledCopy(const std::filesystem::path& program,
                                const std::filesystem::path& home);

/// The packed list of a tree's files, relative to its root.
inline constexpr const char* treeListPath = "share/kelo/files.txt";

/// A file below the root that is not part of the tree; the path of the list if there is no list.
/// Nothing if all files are part of the tree.
std::optional<std::string> foreignFile(const std::filesystem::path& root);

} // namespace kelo::updater
