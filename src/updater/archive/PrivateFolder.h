#pragma once

#include "posix/FileDescriptor.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kelo::updater {

/// Makes the folder and its missing parents, each 0700. False on failure, with errno set.
bool makePrivateFolders(const std::filesystem::path& folder);

/// A line for the log: what failed with which file, and the reason in errno.
std::string failureLine(std::string_view what, const std::filesystem::path& file);

/// A folder with a random name that only this user can enter (0700), in a parent that belongs to
/// this user. The object holds a lock on it, so that other processes do not remove it as a
/// leftover; the destructor removes the folder with its content. Calls block.
class PrivateFolder {
public:
    /// Makes the parent if it is missing. Throws an UpdateError of kind storage, also if the parent
    /// is a symbolic link or belongs to another user.
    explicit PrivateFolder(const std::filesystem::path& parent);
    PrivateFolder(PrivateFolder&& other) noexcept;
    PrivateFolder& operator=(PrivateFolder&& other) noexcept;
    ~PrivateFolder();

    const std::filesystem::path& path() const { return path_; }
    int descriptor() const { return lock.get(); }

    /// Removes the folders that ended processes have left in the parent: those with such a name
    /// that belong to this user and are not locked. Does nothing if the parent is a symbolic link
    /// or belongs to another user. Never fails.
    static void removeLeftovers(const std::filesystem::path& parent) noexcept;

private:
    void removeAll() noexcept;

    std::filesystem::path path_;
    posix::FileDescriptor lock;
};

} // namespace kelo::updater
