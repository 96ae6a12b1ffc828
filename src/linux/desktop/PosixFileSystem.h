#pragma once

#include "platform/FileSystem.h"

namespace kelo::desktop {

/// Files by POSIX calls. Refuses a symbolic link, a FIFO or a device, because every user may write
/// to the folder of the log. New files are readable for their owner only (0600).
class PosixFileSystem final : public platform::FileSystem {
public:
    std::unique_ptr<platform::OpenFile> openForWriting(const std::string& path) override;
    bool writeWholeFile(const std::string& path, ByteView bytes) override;
};

} // namespace kelo::desktop
