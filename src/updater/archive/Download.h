#pragma once

#include "base/async/Task.h"
#include "base/async/Worker.h"
#include "updater/appcast/AppcastItem.h"
#include "updater/archive/Signature.h"
#include "updater/archive/Transport.h"
#include "updater/archive/VerifiedArchive.h"
#include "updater/driver/UserDriver.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace kelo::updater {

/// Longest archive that is downloaded, in bytes.
inline constexpr std::uint64_t archiveLimit = std::uint64_t(1024) * 1024 * 1024;

/// What the feed announces of an archive, and the key to verify it with.
struct AnnouncedArchive {
    std::uint64_t length = 0;
    Signature signature{};
    PublicKey key{};
};

/// Throws an UpdateError if no archive could be verified with this: the key, the length or the
/// signature is missing or invalid, or the length exceeds the limit.
AnnouncedArchive announcedArchive(const Enclosure& enclosure, const std::optional<PublicKey>& key);

/// A complete archive that is not verified yet.
struct DownloadedArchive {
    AppcastItem item;
    PrivateFolder folder;
    std::string fileName;
    posix::FileDescriptor file;
    std::uint64_t size = 0;
};

/// Downloads the item's archive (it must have one) to a new private folder below the given one.
/// Fails and removes the file unless exactly as many bytes arrive as announced. The worker and the
/// transport must outlive the task; progress is called on the main thread.
Task<DownloadedArchive> download(AppcastItem item, AnnouncedArchive announced,
                                 std::filesystem::path below, Transport& transport, Worker& worker,
                                 std::function<void(DownloadProgress)> progress);

/// Verifies the archive's signature. On failure the archive is removed.
Task<VerifiedArchive> verify(DownloadedArchive archive, AnnouncedArchive announced, Worker& worker);

/// The last component of the URL's path as a safe file name: only letters, digits and "._+~-", no
/// period in front, never empty.
std::string fileNameOf(const Url& url);

} // namespace kelo::updater
