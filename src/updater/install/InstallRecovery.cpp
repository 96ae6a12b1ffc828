#include "updater/install/InstallRecovery.h"

#include "updater/install/InstallFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kelo::updater {

namespace {

struct WorkFolder {
    posix::FileDescriptor parent;
    posix::FileDescriptor folder;

    explicit operator bool() const { return static_cast<bool>(folder); }
};

bool isHeld(int folder) {
    return ::flock(folder, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

/// The tree's work folder, if it belongs to this user and no process has locked it.
WorkFolder takeWorkFolder(const std::filesystem::path& root) {
    posix::FileDescriptor parent(
        ::open(root.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    posix::FileDescriptor folder =
        parent ? openFolder(parent.get(), workFolderName(root)) : posix::FileDescriptor();
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid() ||
        isHeld(folder.get()))
        return {};
    return {std::move(parent), std::move(folder)};
}

/// False if pieces are still missing.
bool repair(const std::filesystem::path& root, const WorkFolder& work, const ExchangeCalls& calls) {
    return !exchangeWasInterrupted(work.folder.get()) ||
           takeBack(root, work.parent.get(), work.folder.get(), calls);
}

} // namespace

void repairInstalledTree(const std::filesystem::path& root, const ExchangeCalls& calls) noexcept {
    if (const WorkFolder work = takeWorkFolder(root))
        repair(root, work, calls);
}

void confirmInstalledTree(const std::filesystem::path& root, const ExchangeCalls& calls) noexcept {
    const WorkFolder work = takeWorkFolder(root);
    if (!work || !repair(root, work, calls))
        return;
    // "new" goes last. If this process is killed in between, what is left looks like an exchange
    // that was undone completely, or like none.
    for (const auto* name :
         {"previous", "added", "discarded", "copying", "unpacking", "old", "new"}) {
        removeTree(work.folder.get(), name);
        calls.step();
    }
    removeTree(work.parent.get(), workFolderName(root));
}

} // namespace kelo::updater
