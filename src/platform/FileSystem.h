#pragma once

#include "base/Bytes.h"

#include <memory>
#include <string>

namespace kelo::platform {

/// A file that is open for writing. The destructor closes it.
class OpenFile {
public:
    virtual ~OpenFile() = default;
    virtual void seekToEnd() = 0;
    virtual void write(ByteView bytes) = 0;
};

/// The file operations of the debug log. They fail if the path names a symbolic link, anything else
/// that is not a regular file, a file of another user, or a file with a second name.
class FileSystem {
public:
    virtual ~FileSystem() = default;
    /// Opens an existing file and keeps its content. Returns null on failure.
    virtual std::unique_ptr<OpenFile> openForWriting(const std::string& path) = 0;
    /// Creates the file or replaces its content. Returns false on failure.
    virtual bool writeWholeFile(const std::string& path, ByteView bytes) = 0;
};

} // namespace kelo::platform
