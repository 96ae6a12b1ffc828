#pragma once

#include "platform/FileSystem.h"
#include "posix/FileDescriptor.h"

namespace kelo::desktop {

/// Files by POSIX calls. Refuses a symbolic link, a FIFO, a device, a file of another user and one
/// with a second name (hard link), because every user may write to the folder of the log. Says so
/// once in the journal. New files are readable for their owner only (0600).
class PosixFileSystem final : public platform::FileSystem {
public:
    std::unique_ptr<platform::OpenFile> openForWriting(const std::string& path) override;
    bool writeWholeFile(const std::string& path, ByteView bytes) override;

private:
    /// Empty if the path cannot be opened or is not a regular file of this user with one name.
    posix::FileDescriptor openOwn(const std::string& path, int flags);

    bool warned = false;
};

} // namespace kelo::desktop
