#pragma once

#include <archive.h>
#include <sys/types.h>

#include <array>
#include <memory>
#include <vector>

namespace kelo::updater {

struct ArchiveDeleter {
    void operator()(archive* reader) const { archive_read_free(reader); }
};
using ArchivePointer = std::unique_ptr<archive, ArchiveDeleter>;

/// Reads tar with the compressions that releases have.
ArchivePointer makeTarReader();

/// Reads the members of a .deb, which are archives themselves but for one.
ArchivePointer makePackageReader();

/// Gives an archive reader the bytes of a file, with pread(2), so that the descriptor's own offset
/// stays unchanged. Must outlive the reader.
struct ArchiveSource {
    int file;
    off_t offset = 0;
    std::array<char, 65536> buffer{};

    /// For archive_read_open(), with the source as client data.
    static la_ssize_t read(archive* reader, void* source, const void** bytes);
};

/// Gives an archive reader the bytes of the member that the reader of a .deb stands at. Must
/// outlive the archive reader; the reader of the .deb must outlive both.
struct MemberSource {
    archive* package;
    std::vector<char> buffer = std::vector<char>(65536);

    /// For archive_read_open(), with the source as client data.
    static la_ssize_t read(archive* reader, void* source, const void** bytes);
};

} // namespace kelo::updater
