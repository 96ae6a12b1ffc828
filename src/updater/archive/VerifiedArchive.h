#pragma once

#include "posix/FileDescriptor.h"
#include "updater/appcast/AppcastItem.h"
#include "updater/archive/PrivateFolder.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace kelo::updater {

/// An archive whose bytes have been held against the publisher's key. Install from descriptor()
/// and from nothing else: these are the very bytes that were verified, while a name in a folder can
/// come to mean another file. Moves only; its folder goes with it.
class VerifiedArchive {
public:
    VerifiedArchive(AppcastItem item, PrivateFolder folder, std::string fileName,
                    posix::FileDescriptor file, std::uint64_t size)
        : item_(std::move(item)),
          folder_(std::move(folder)),
          fileName_(std::move(fileName)),
          file(std::move(file)),
          size_(size) {}

    const AppcastItem& item() const { return item_; }
    /// Open for reading and writing, at any offset: read with pread(2), or seek first.
    int descriptor() const { return file.get(); }
    std::uint64_t size() const { return size_; }
    /// The last component of the archive's address, harmless as a file name ("kelo-1.1.tar.zst").
    /// Tells what kind of archive it is; the file lies under this name in the folder.
    const std::string& fileName() const { return fileName_; }
    /// 0700 and ours alone, with room for unpacking; not necessarily on the file system of the
    /// installed copy.
    const std::filesystem::path& folder() const { return folder_.path(); }

private:
    AppcastItem item_;
    PrivateFolder folder_;
    std::string fileName_;
    posix::FileDescriptor file;
    std::uint64_t size_;
};

} // namespace kelo::updater
