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

/// Longest archive that is taken.
inline constexpr std::uint64_t archiveLimit = std::uint64_t(1024) * 1024 * 1024;

/// What a feed says about an archive, in a form that its bytes can be held against.
struct ArchivePromise {
    std::uint64_t length = 0;
    Signature signature{};
    PublicKey key{};
};

/// Fails with an UpdateError when the archive could not be verified whatever its bytes are: no
/// length, a length beyond the limit, no signature, one that is none, no key.
ArchivePromise promiseOf(const Enclosure& enclosure, const std::optional<PublicKey>& key);

struct DownloadedArchive {
    AppcastItem item;
    PrivateFolder folder;
    std::string fileName;
    posix::FileDescriptor file;
    std::uint64_t size = 0;
};

/// Downloads the archive of an item (it must have one) into a private folder below the given one.
/// The file is removed again unless exactly as many bytes came as were promised. The worker and the
/// transport must outlive the task; progress is called on the main thread.
Task<DownloadedArchive> download(AppcastItem item, ArchivePromise promise,
                                 std::filesystem::path below, Transport& transport, Worker& worker,
                                 std::function<void(DownloadProgress)> progress);

/// Holds the archive against the promise. On failure it is removed.
Task<VerifiedArchive> verify(DownloadedArchive archive, ArchivePromise promise, Worker& worker);

/// The last component of the address as a file name: letters, digits and "._+~-" alone, not
/// beginning with a period, never empty.
std::string fileNameOf(const Url& url);

} // namespace kelo::updater
