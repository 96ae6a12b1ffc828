#pragma once

#include "platform/FileSystem.h"

namespace kelo::desktop {

/// Files by POSIX calls. A symbolic link, a FIFO or a device at the path is refused: the log lies
/// in a folder that every user may write to. New files are for their owner alone (0600).
class PosixFileSystem final : public platform::FileSystem {
public:
    std::unique_ptr<platform::OpenFile> openForWriting(const std::string& path) override;
    bool writeWholeFile(const std::string& path, ByteView bytes) override;
};

} // namespace kelo::desktop
