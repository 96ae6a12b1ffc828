#include "updater/archive/PrivateFolder.h"

#include "base/Translation.h"
#include "updater/error/UpdateError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace kelo::updater {

namespace {

constexpr std::string_view namePrefix = "download-";

[[noreturn]] void fail(const std::string& cause) {
    throw UpdateError(
        UpdateErrorKind::storage,
        translated("There was no safe place to keep the update. Please check that there is room "
                   "in your home folder and that you may write there."),
        cause);
}

bool isOurFolder(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

posix::FileDescriptor openFolder(const std::filesystem::path& path) {
    posix::FileDescriptor folder(
        open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return folder && isOurFolder(folder.get()) ? std::move(folder) : posix::FileDescriptor();
}

} // namespace

bool makePrivateFolders(const std::filesystem::path& folder) {
    if (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST)
        return true;
    const auto parent = folder.parent_path();
    if (errno != ENOENT || parent.empty() || parent == folder || !makePrivateFolders(parent))
        return false;
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

std::string failureLine(std::string_view what, const std::filesystem::path& file) {
    const std::error_code reason(errno, std::generic_category());
    return std::string(what) + " " + file.string() + ": " + reason.message();
}

PrivateFolder::PrivateFolder(const std::filesystem::path& parent) {
    if (!makePrivateFolders(parent))
        fail(failureLine("Could not make", parent));
    if (!openFolder(parent))
        fail(parent.string() + " is not a folder of this user");
    std::string name = (parent / namePrefix).string() + "XXXXXX";
    if (!mkdtemp(name.data()))
        fail(failureLine("Could not make a folder in", parent));
    path_ = name;
    lock = openFolder(path_);
    if (!lock || flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        const std::string cause = failureLine("Could not lock", path_);
        removeAll();
        fail(cause);
    }
}

PrivateFolder::PrivateFolder(PrivateFolder&& other) noexcept
    : path_(std::exchange(other.path_, {})), lock(std::move(other.lock)) {}

PrivateFolder& PrivateFolder::operator=(PrivateFolder&& other) noexcept {
    std::swap(path_, other.path_);
    std::swap(lock, other.lock);
    return *this;
}

PrivateFolder::~PrivateFolder() {
    removeAll();
}

void PrivateFolder::removeAll() noexcept {
    std::error_code ignored;
    if (!path_.empty())
        std::filesystem::remove_all(path_, ignored);
}

void PrivateFolder::removeLeftovers(const std::filesystem::path& parent) noexcept {
    try {
        if (!openFolder(parent))
            return;
        std::vector<std::filesystem::path> candidates;
        for (const auto& entry : std::filesystem::directory_iterator(parent))
            if (entry.path().filename().string().starts_with(namePrefix))
                candidates.push_back(entry.path());
        for (const auto& candidate : candidates) {
            const posix::FileDescriptor folder = openFolder(candidate);
            std::error_code ignored;
            if (folder && flock(folder.get(), LOCK_EX | LOCK_NB) == 0)
                std::filesystem::remove_all(candidate, ignored);
        }
    } catch (const std::exception&) {
        // A parent that cannot be listed is left for the next start.
    }
}

} // namespace kelo::updater
