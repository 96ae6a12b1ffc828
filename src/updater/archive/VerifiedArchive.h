#pragma once

#include "posix/FileDescriptor.h"
#include "updater/appcast/AppcastItem.h"
#include "updater/archive/PrivateFolder.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace kelo::updater {

/// An archive whose signature was verified. Install only from descriptor(), which reads the
/// verified bytes; the file's name could mean another file by now. Owns its folder, which is
/// removed with it. Move-only.
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
    /// The file's name in the folder: the last component of the archive's URL, made safe
    /// ("kelo-1.1.tar.zst"). Its extension tells the kind of archive.
    const std::string& fileName() const { return fileName_; }
    /// A private folder (0700), possibly on another file system than the installed copy.
    const std::filesystem::path& folder() const { return folder_.path(); }

private:
    AppcastItem item_;
    PrivateFolder folder_;
    std::string fileName_;
    posix::FileDescriptor file;
    std::uint64_t size_;
};

} // namespace kelo::updater
