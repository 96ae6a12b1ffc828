#include "updater/tree/WorkFolder.h"

#include "updater/files/InstallFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kelo::updater {

namespace {

constexpr const char* takingBack = "taking-back";

bool isHeld(int folder) {
    return ::flock(folder, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

} // namespace

WorkFolder::WorkFolder(std::filesystem::path root, posix::FileDescriptor parent,
                       posix::FileDescriptor folder)
    : root(std::move(root)), parent(std::move(parent)), folder(std::move(folder)) {}

std::optional<WorkFolder> WorkFolder::take(const std::filesystem::path& root) {
    posix::FileDescriptor parent(
        ::open(root.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    posix::FileDescriptor folder =
        parent ? openFolder(parent.get(), workFolderName(root)) : posix::FileDescriptor();
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid() ||
        isHeld(folder.get()))
        return std::nullopt;
    return WorkFolder(root, std::move(parent), std::move(folder));
}

bool WorkFolder::has(const char* name) const {
    return exists(folder.get(), name);
}

bool WorkFolder::isCutOff() const {
    return has(takingBack) || exchangeWasInterrupted(folder.get());
}

bool WorkFolder::hasTreeBefore() const {
    return treeBefore() || has("previous");
}

bool WorkFolder::hasProgram(const char* name) const {
    return exists(folder.get(), std::string(name) + "/bin/kelo");
}

void WorkFolder::install(const ExchangeCalls& calls) const {
    exchangeTrees(root, parent.get(), folder.get(), calls);
}

const char* WorkFolder::treeBefore() const {
    for (const char* name : {"old", "new"}) {
        if (hasProgram(name))
            return name;
    }
    return nullptr;
}

void WorkFolder::noteTakenBack() const {
    ::renameat(folder.get(), updateMark, folder.get(), failedMark);
    ::unlinkat(folder.get(), takingBack, AT_REMOVEDIR);
    ::fsync(folder.get());
}

bool WorkFolder::takeTreeBack(const ExchangeCalls& calls) const {
    // Without this mark a stop between the next two steps would look like a staged update.
    const posix::FileDescriptor mark(
        ::openat(folder.get(), starting, O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!mark || ::fsync(folder.get()) != 0)
        return false;
    calls.step();
    const char* const before = treeBefore();
    if (before) {
        const std::string name = root.filename();
        if (calls.exchange(parent.get(), name.c_str(), folder.get(), before) != 0)
            return false;
        ::fsync(parent.get());
    } else {
        const bool marked = makeFolder(folder.get(), takingBack) && ::fsync(folder.get()) == 0;
        calls.step();
        if (!marked || !takeBack(root, parent.get(), folder.get(), calls))
            return false;
    }
    calls.step();
    noteTakenBack();
    calls.step();
    return true;
}

bool WorkFolder::endCutOff(const ExchangeCalls& calls) const {
    if (!takeBack(root, parent.get(), folder.get(), calls))
        return false;
    if (has(takingBack))
        noteTakenBack();
    else
        ::unlinkat(folder.get(), updateMark, 0); // pieces of what was staged are missing
    return true;
}

void WorkFolder::remove(const ExchangeCalls& calls) const {
    // The marks go first: with them, half a tree would pass for one to be put in place. "new" goes
    // last. If this process is killed in between, what is left looks like an exchange that was
    // undone completely, or like none.
    for (const auto* name : {updateMark, failedMark, "previous", "added", "discarded", "copying",
                             "unpacking", "old", "new"}) {
        removeTree(folder.get(), name);
        calls.step();
    }
    removeTree(parent.get(), workFolderName(root));
}

} // namespace kelo::updater
