#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::updater {

enum class CopyOwner {
    user,           ///< a tree of its own below the user's home, with nothing else in it
    packageManager, ///< below /usr, which is the package manager's alone
    unknown,        ///< anything else: built here, in /opt, shared with other programs
};

/// The copy of the program that is running.
struct InstalledCopy {
    CopyOwner owner = CopyOwner::unknown;
    /// The folder above bin.
    std::filesystem::path root;
};

/// Looks at the disk, at a few dozen names at most. Changes nothing.
InstalledCopy findInstalledCopy(const std::filesystem::path& program,
                                const std::filesystem::path& home);

/// The list of a tree's own files that is packed with it, relative to its root.
inline constexpr const char* treeListPath = "share/kelo/files.txt";

/// A file below the root that did not come with the tree; the list's own name when the tree has
/// none. Nothing when all belong to it.
std::optional<std::string> foreignFile(const std::filesystem::path& root);

} // namespace kelo::updater
