#pragma once

#include "base/Bytes.h"

#include <memory>
#include <string>

namespace kelo::platform {

/// A file that is open for writing; closed when it goes.
class OpenFile {
public:
    virtual ~OpenFile() = default;
    virtual void seekToEnd() = 0;
    virtual void write(ByteView bytes) = 0;
};

/// The few file operations the debug log needs. None follows a symbolic link at the path itself,
/// and none touches anything but a regular file.
class FileSystem {
public:
    virtual ~FileSystem() = default;
    /// Opens without creating or truncating; null when that cannot be done.
    virtual std::unique_ptr<OpenFile> openForWriting(const std::string& path) = 0;
    /// Creates the file or replaces its content; false when that cannot be done.
    virtual bool writeWholeFile(const std::string& path, ByteView bytes) = 0;
};

} // namespace kelo::platform
