#include "linux/downloads/DownloadFolder.h"

#include "linux/downloads/FileName.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <glib/gstdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace kelo::downloads {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view hiddenPrefix = ".kelo-download-";
constexpr long usualNameLength = 255; ///< in bytes
constexpr long leastNameLength = 48;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

posix::FileDescriptor openFolder(const fs::path& path) {
    return posix::FileDescriptor(
        ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

std::size_t longestNameIn(const fs::path& folder) {
    const long length = ::pathconf(folder.c_str(), _PC_NAME_MAX);
    if (length < leastNameLength)
        return usualNameLength;
    // Sticks take 255 characters, and say how many bytes those could be at the most.
    return static_cast<std::size_t>(std::min(length, usualNameLength));
}

// Also a link that leads nowhere has the name.
bool isTaken(const fs::path& path) {
    return fs::exists(fs::symlink_status(path));
}

/// A folder of this process's own in the given one, and the lock that says so.
std::pair<fs::path, posix::FileDescriptor> makeHiddenFolder(const fs::path& folder) {
    for (;;) {
        std::string path = (folder / hiddenPrefix).string() + "XXXXXX";
        if (!::mkdtemp(path.data()))
            fail("a folder for a download could not be made");
        posix::FileDescriptor lock = openFolder(path);
        if (!lock && errno != ENOENT)
            fail("the folder of a download could not be opened");
        // A file system without locks refuses it to those as well who look for leftovers.
        if (lock && ::flock(lock.get(), LOCK_EX) != 0)
            g_debug("downloads: the folder of a download could not be locked");
        // Another process may have taken it for a leftover before it was locked.
        struct stat found {};
        if (lock && ::fstat(lock.get(), &found) == 0 && found.st_nlink > 0)
            return {path, std::move(lock)};
    }
}

/// Unlike remove_all(), does not give up when the engine removes its file at the same time.
void removeHidden(const fs::path& folder, std::error_code& failure) {
    std::error_code ignored;
    fs::directory_iterator entry(folder, ignored);
    for (; entry != fs::directory_iterator(); entry.increment(ignored)) {
        std::error_code gone;
        fs::remove(entry->path(), gone);
    }
    fs::remove(folder, failure);
}

} // namespace

/// The names that files in a folder can have.
struct DownloadPlace::Names {
    static std::set<fs::path>& reserved() {
        static std::set<fs::path> paths;
        return paths;
    }

    fs::path nextFree() {
        for (;; ++number) {
            const fs::path path = folder / numbered(name, number, longest);
            if (!reserved().contains(path) && !isTaken(path))
                return path;
        }
    }

    fs::path folder;
    FileName name;
    std::size_t longest;
    unsigned number = 1;
};

DownloadPlace::DownloadPlace(fs::path hidden, posix::FileDescriptor lock,
                             std::shared_ptr<Names> names, fs::path path)
    : hidden(std::move(hidden)),
      lock(std::move(lock)),
      names(std::move(names)),
      path(std::move(path)) {
    Names::reserved().insert(this->path);
}

DownloadPlace::~DownloadPlace() {
    Names::reserved().erase(path);
    std::error_code failure;
    removeHidden(hidden, failure);
    if (failure)
        g_warning("The rest of a download could not be removed: %s", failure.message().c_str());
}

void DownloadPlace::discard() const {
    std::error_code ignored;
    removeHidden(hidden, ignored);
}

std::string DownloadPlace::complete() {
    while (!moveWithoutReplacing(growingPath(), path)) {
        Names::reserved().erase(path);
        path = names->nextFree();
        Names::reserved().insert(path);
    }
    return path.string();
}

std::unique_ptr<DownloadPlace> DownloadFolder::makePlace(std::string_view suggestion) {
    if (g_mkdir_with_parents(folder.c_str(), 0700) != 0)
        fail("the downloads folder could not be made");
    auto names = std::make_shared<DownloadPlace::Names>(
        DownloadPlace::Names{folder, safeFileName(suggestion), longestNameIn(folder)});
    auto path = names->nextFree();
    auto [hidden, lock] = makeHiddenFolder(folder);
    return std::make_unique<DownloadPlace>(std::move(hidden), std::move(lock), std::move(names),
                                           std::move(path));
}

fs::path userDownloadsFolder() {
    const char* const known = g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD);
    return known ? fs::path(known) : fs::path(g_get_home_dir()) / "Downloads";
}

void removeLeftovers(const fs::path& folder) {
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        if (!at->path().filename().string().starts_with(hiddenPrefix))
            continue;
        const posix::FileDescriptor lock = openFolder(at->path());
        struct stat found {};
        if (!lock || ::fstat(lock.get(), &found) != 0 || found.st_uid != ::getuid() ||
            ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
            continue;
        std::error_code ignored;
        fs::remove_all(at->path(), ignored);
        g_debug("downloads: what an earlier process had begun is removed");
    }
}

void removeLeftoversInBackground() {
    const GTaskThreadFunc remove = [](GTask*, gpointer, gpointer, GCancellable*) {
        removeLeftovers(userDownloadsFolder());
    };
    GTask* const task = g_task_new(nullptr, nullptr, nullptr, nullptr);
    g_task_run_in_thread(task, remove);
    g_object_unref(task);
}

bool moveWithoutReplacing(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno == EEXIST)
        return false;
    // What file systems answer that do not know the flag.
    if (errno == EINVAL || errno == ENOSYS || errno == ENOTSUP)
        return claimAndMove(from, to);
    fail("a download could not be given its name");
}

bool claimAndMove(const fs::path& from, const fs::path& to) {
    const posix::FileDescriptor claimed(
        ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!claimed && errno == EEXIST)
        return false;
    if (!claimed)
        fail("a download could not be given its name");
    if (::rename(from.c_str(), to.c_str()) == 0)
        return true;
    const int reason = errno;
    ::unlink(to.c_str());
    errno = reason;
    fail("a download could not be given its name");
}

} // namespace kelo::downloads
