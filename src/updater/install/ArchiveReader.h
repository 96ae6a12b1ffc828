#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelo::updater {

/// What an archive may become on the disk; ours is a hundredth of it.
struct ArchiveLimits {
    std::size_t entries = 20000;
    std::uint64_t bytes = 1024ULL * 1024 * 1024;
};

/// Unpacks a tar archive (zstd, xz or gzip) into an empty folder and brings it to the disk, all by
/// descriptors: the archive is read from its beginning, whatever its offset, and nothing is written
/// outside the folder. Gives the name of the one folder that holds everything.
///
/// Owners and times are not taken over, and permissions only as far as a file is executable. An
/// archive is refused that has more than one top folder, an absolute path, a "..", a link that
/// leaves the tree, anything but files, folders and links, a set-uid, set-gid or sticky bit, the
/// same name twice, or more than the limits allow. What was unpacked until then stays in the folder
/// for the caller to remove. Fails with an UpdateError. Blocks.
std::string unpackArchive(int archive, int folder, const ArchiveLimits& limits = {});

} // namespace kelo::updater
