#include "updater/archive/Download.h"

#include "base/Translation.h"
#include "updater/error/UpdateError.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace kelo::updater {

namespace {

UpdateError unverified(std::string cause) {
    return {
        UpdateErrorKind::signature,
        translated(
            "Nothing shows that this update comes from Kelo's publisher, so it was not installed. "
            "Please ask the publisher, and keep using the version you have."),
        std::move(cause)};
}

UpdateError wrongLength(std::string cause) {
    return {
        UpdateErrorKind::archive,
        translated(
            "The update is not the file that was announced, so it was deleted. Please try again "
            "later."),
        std::move(cause)};
}

UpdateError writeFailure(const std::filesystem::path& file) {
    const bool full = errno == ENOSPC || errno == EDQUOT || errno == EFBIG;
    const std::string cause = failureLine("Could not write", file);
    return {
        UpdateErrorKind::storage,
        full ? translated(
                   "There is not enough room on the disk for the update. Please make room and try "
                   "again.")
             : translated(
                   "The update could not be written to the disk. Please check that there is room "
                   "in your home folder and that you may write there."),
        cause};
}

/// A file that is being downloaded. The worker shares it, because the task may be dropped while a
/// portion is being written.
struct OpenArchive {
    explicit OpenArchive(const std::filesystem::path& below, const std::string& name)
        : folder(below),
          path(folder.path() / name),
          file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600)) {
        if (!file)
            throw writeFailure(path);
    }

    PrivateFolder folder;
    std::filesystem::path path;
    posix::FileDescriptor file;
};
using SharedArchive = std::shared_ptr<OpenArchive>;

void append(const OpenArchive& archive, const Bytes& portion) {
    if (!posix::writeAll(archive.file.get(), portion))
        throw writeFailure(archive.path);
}

/// Writes the bytes to the archive's file, and fails if they are more or fewer than expected.
class ArchiveSink final : public ByteSink {
public:
    ArchiveSink(SharedArchive archive, std::uint64_t expected, Worker& worker,
                std::function<void(DownloadProgress)> progress)
        : archive(std::move(archive)),
          expected(expected),
          worker(worker),
          progress(std::move(progress)) {}

    void announce(std::uint64_t length) override {
        if (length != expected)
            throw wrongLength("the server has " + std::to_string(length) + " bytes, the feed " +
                              std::to_string(expected));
    }

    Task<void> take(Bytes portion) override {
        const std::uint64_t size = portion.size();
        if (size > expected - received)
            throw wrongLength("more than the " + std::to_string(expected) + " bytes announced");
        auto job = [archive = archive, portion = std::move(portion)] { append(*archive, portion); };
        co_await onWorker(worker, std::move(job));
        received += size;
        progress({received, expected});
    }

    void finish() const {
        if (received != expected)
            throw wrongLength("only " + std::to_string(received) + " of " +
                              std::to_string(expected) + " bytes");
    }

private:
    SharedArchive archive;
    std::uint64_t expected;
    std::uint64_t received = 0;
    Worker& worker;
    std::function<void(DownloadProgress)> progress;
};

bool isSafe(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("._+~-").find(c) != std::string_view::npos;
}

} // namespace

AnnouncedArchive announcedArchive(const Enclosure& enclosure, const std::optional<PublicKey>& key) {
    if (!key)
        throw UpdateError(
            UpdateErrorKind::signature,
            translated("This copy of Kelo has no key to verify updates with, so nothing was "
                       "installed. Please ask its publisher."),
            "no SUPublicEDKey of 32 bytes in the information dictionary");
    if (!enclosure.signature)
        throw unverified("the archive has no signature");
    const auto signature = parseSignature(*enclosure.signature);
    if (!signature)
        throw unverified("the signature is not Base64 of 64 bytes");
    if (!enclosure.length || *enclosure.length == 0)
        throw wrongLength("the feed announces no length");
    if (*enclosure.length > archiveLimit)
        throw UpdateError(UpdateErrorKind::archive,
                          translated("The update is larger than any release of Kelo, so it was not "
                                     "downloaded. Please ask Kelo's publisher."),
                          std::to_string(*enclosure.length) + " bytes announced");
    return {*enclosure.length, *signature, *key};
}

Task<DownloadedArchive> download(AppcastItem item, AnnouncedArchive announced,
                                 std::filesystem::path below, Transport& transport, Worker& worker,
                                 std::function<void(DownloadProgress)> progress) {
    const std::string name = fileNameOf(item.enclosure->url);
    auto makeFile = [below, name] { return std::make_shared<OpenArchive>(below, name); };
    const SharedArchive archive = co_await onWorker(worker, std::move(makeFile));
    progress({0, announced.length});
    const auto sink =
        std::make_shared<ArchiveSink>(archive, announced.length, worker, std::move(progress));
    co_await transport.download(item.enclosure->url, sink);
    sink->finish();
    DownloadedArchive result{std::move(item), std::move(archive->folder), name,
                             std::move(archive->file), announced.length};
    co_return result;
}

Task<VerifiedArchive> verify(DownloadedArchive archive, AnnouncedArchive announced,
                             Worker& worker) {
    const auto shared = std::make_shared<DownloadedArchive>(std::move(archive));
    auto job = [shared, announced] {
        return verifiesFile(announced.key, announced.signature, shared->file.get(),
                            announced.length);
    };
    const bool genuine = co_await onWorker(worker, std::move(job));
    if (!genuine)
        throw unverified("the signature does not match the archive");
    VerifiedArchive result(std::move(shared->item), std::move(shared->folder),
                           std::move(shared->fileName), std::move(shared->file), shared->size);
    co_return result;
}

std::string fileNameOf(const Url& url) {
    constexpr std::size_t longest = 128;
    std::string name = url.path();
    name.erase(0, name.find_last_of('/') + 1);
    // Keep the end: the extension tells the kind of archive.
    if (name.size() > longest)
        name.erase(0, name.size() - longest);
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !isSafe(c); }, '_');
    if (name.starts_with('.'))
        name.front() = '_';
    return name.empty() ? "update" : name;
}

} // namespace kelo::updater
