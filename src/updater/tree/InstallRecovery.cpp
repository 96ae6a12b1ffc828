#include "updater/tree/InstallRecovery.h"

#include "updater/tree/InstalledCopy.h"
#include "updater/tree/TreeState.h"
#include "updater/tree/WorkFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <utility>

namespace kelo::updater {

TreeStart::TreeStart(std::filesystem::path root, ExchangeCalls calls) noexcept
    : root(std::move(root)), calls(std::move(calls)) {
    try {
        look();
    } catch (const std::exception&) {
        // An update that could not be put in place waits for the next start.
    }
}

void TreeStart::look() {
    const auto work = WorkFolder::take(root);
    if (!work)
        return;
    switch (stateOf(*work)) {
    case TreeState::settled:
        return;
    case TreeState::cutOff: {
        const bool wasOnTrial = work->has(WorkFolder::starting);
        if (work->endCutOff(calls) && wasOnTrial)
            replaced = Replacement::byTreeBefore;
        return;
    }
    case TreeState::staged:
        // A file of the user's own in the tree is never lost.
        if (foreignFile(root))
            return;
        work->install(calls);
        replaced = Replacement::byUpdate;
        return;
    case TreeState::onTrial:
        beginTrial(*work);
        return;
    case TreeState::takenBack:
        failed = updateOf(*work);
        return;
    }
}

void TreeStart::beginTrial(const WorkFolder& work) {
    const auto open = [&](int flags) {
        return posix::FileDescriptor(::openat(work.descriptor(), WorkFolder::starting,
                                              O_RDWR | O_NOFOLLOW | O_CLOEXEC | flags, 0600));
    };
    trial = open(O_CREAT | O_EXCL);
    const bool isFirst = static_cast<bool>(trial);
    if (!isFirst)
        trial = open(0);
    if (::flock(trial.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        trial = posix::FileDescriptor(); // another process is on trial
        return;
    }
    if (isFirst) {
        ::unlinkat(work.descriptor(), WorkFolder::setAside, 0);
        ::fsync(work.descriptor());
    } else if (work.takeTreeBack(calls)) {
        replaced = Replacement::byTreeBefore;
    }
}

void TreeStart::confirm() noexcept {
    clearWorkFolder(root, StagedUpdate::keep, calls);
    trial = posix::FileDescriptor();
}

void TreeStart::setAside() noexcept {
    if (!trial)
        return;
    if (const auto work = WorkFolder::take(root))
        ::renameat(work->descriptor(), WorkFolder::starting, work->descriptor(),
                   WorkFolder::setAside);
    trial = posix::FileDescriptor();
}

void clearWorkFolder(const std::filesystem::path& root, StagedUpdate staged,
                     const ExchangeCalls& calls) noexcept {
    const auto work = WorkFolder::take(root);
    if (!work)
        return;
    const TreeState state = stateOf(*work);
    const bool isKept = state == TreeState::staged && staged == StagedUpdate::keep;
    if (!isKept && (state != TreeState::cutOff || work->endCutOff(calls)))
        work->remove(calls);
}

} // namespace kelo::updater
