#pragma once

#include "posix/FileDescriptor.h"

#include <filesystem>

namespace kelo::updater {

/// A folder of a random name that only this user can enter (0700), made inside a parent that
/// belongs to this user. Locked while the object lives, so that a sweep of another process leaves
/// it alone; removed with everything in it when the object goes. Calls block.
class PrivateFolder {
public:
    /// Makes the parent where it is missing. Fails with an UpdateError of kind storage, also when
    /// the parent is a symbolic link or somebody else's.
    explicit PrivateFolder(const std::filesystem::path& parent);
    PrivateFolder(PrivateFolder&& other) noexcept;
    PrivateFolder& operator=(PrivateFolder&& other) noexcept;
    ~PrivateFolder();

    const std::filesystem::path& path() const { return path_; }
    int descriptor() const { return lock.get(); }

    /// Removes what ended processes have left in the parent. Only folders that bear our kind of
    /// name, belong to this user and are held by no living process; nothing at all when the parent
    /// is a symbolic link or somebody else's. Never fails.
    static void removeLeftovers(const std::filesystem::path& parent) noexcept;

private:
    void removeAll() noexcept;

    std::filesystem::path path_;
    posix::FileDescriptor lock;
};

} // namespace kelo::updater
