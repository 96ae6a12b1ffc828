#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelo::updater {

/// How much an archive may unpack to; our packages are a hundredth of it.
struct ArchiveLimits {
    std::size_t entries = 20000;
    std::uint64_t bytes = 1024ULL * 1024 * 1024;
};

/// Unpacks a tar archive (zstd, xz or gzip) to an empty folder and syncs it to the disk. Both are
/// descriptors: the archive is read from its beginning, whatever its offset, and nothing is written
/// outside the folder. Returns the name of the archive's one top folder.
///
/// Ignores owners, times and all permissions but "executable". Throws an UpdateError for an archive
/// with more than one top folder, an absolute path, a "..", a link that leaves the tree, an entry
/// that is not a file, folder or link, a set-uid, set-gid or sticky bit, a name that occurs twice,
/// or more content than the limits allow. On failure the caller removes what was unpacked. Blocks.
std::string unpackArchive(int archive, int folder, const ArchiveLimits& limits = {});

} // namespace kelo::updater
