#include "updater/tree/StartWatch.h"

#include "updater/files/InstallFiles.h"
#include "updater/tree/TreeState.h"
#include "updater/tree/WorkFolder.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace kelo::updater {

namespace {

using Clock = std::chrono::steady_clock;

/// False at the deadline.
bool awaitReadable(int descriptor, std::chrono::milliseconds deadline) {
    pollfd ready{descriptor, POLLIN, 0};
    int count = -1;
    do
        count = ::poll(&ready, 1, static_cast<int>(deadline.count()));
    while (count < 0 && errno == EINTR);
    return count > 0;
}

struct Started {
    bool begun = false;
    /// None also where the system knows no handles of processes.
    posix::FileDescriptor process;
};

/// A program that lacks a library starts and ends at once.
Started startProgram(std::vector<std::string> words) {
    std::vector<char*> list;
    for (auto& word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    pid_t process = 0;
    if (::posix_spawn(&process, list[0], nullptr, nullptr, list.data(), environ) != 0)
        return {};
    return {true, posix::FileDescriptor(::pidfd_open(process, 0))};
}

/// Tells of changes in the work folder.
class Changes {
public:
    explicit Changes(const std::filesystem::path& folder)
        : queue(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        ::inotify_add_watch(queue.get(), folder.c_str(),
                            IN_DELETE | IN_CREATE | IN_MOVE | IN_DELETE_SELF | IN_ONLYDIR);
    }

    int descriptor() const { return queue.get(); }
    void forget() const {
        std::array<char, 4096> events{};
        while (::read(queue.get(), events.data(), events.size()) > 0) {
        }
    }

private:
    posix::FileDescriptor queue;
};

/// Whether the trial goes on as far as the folder tells, without taking the folder's lock: the
/// program needs that for its own.
bool isOpen(const std::filesystem::path& folder) {
    const posix::FileDescriptor work(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return work && exists(work.get(), "update") && !exists(work.get(), WorkFolder::setAside);
}

/// Waits until the process ends, the trial is over or the deadline passes.
void awaitOutcome(int process, const std::filesystem::path& folder,
                  std::chrono::milliseconds deadline) {
    const Changes changes(folder);
    const auto end = Clock::now() + deadline;
    while (isOpen(folder)) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        std::array<pollfd, 2> ready{pollfd{process, POLLIN, 0},
                                    pollfd{changes.descriptor(), POLLIN, 0}};
        const int count =
            ::poll(ready.data(), ready.size(), std::max(0, static_cast<int>(left.count())));
        if (count == 0 || ready[0].revents)
            return;
        changes.forget();
    }
}

bool isOnTrialElsewhere(const WorkFolder& work) {
    const posix::FileDescriptor trial(
        ::openat(work.descriptor(), WorkFolder::starting, O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    return trial && ::flock(trial.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

} // namespace

WatchResult watchStart(const std::filesystem::path& root, posix::FileDescriptor ended,
                       const std::vector<std::string>& start, const WatchDeadlines& deadlines,
                       const ExchangeCalls& calls) {
    const auto folder = root.parent_path() / workFolderName(root);
    Started watched{true, std::move(ended)};
    if (!start.empty()) {
        if (!awaitReadable(watched.process.get(), deadlines.end))
            return WatchResult::notBegun;
        watched = startProgram(start);
    }
    if (watched.begun) {
        // Without a handle the next start decides.
        if (!watched.process)
            return WatchResult::confirmed;
        const int process = watched.process.get();
        awaitOutcome(process, folder, deadlines.confirmation);
        if (!isOpen(folder))
            return WatchResult::confirmed;
        // It ended, or hangs.
        ::pidfd_send_signal(process, SIGKILL, nullptr, 0);
        awaitReadable(process, deadlines.end);
    }
    const auto work = WorkFolder::take(root);
    if (!work || stateOf(*work) != TreeState::onTrial || work->has(WorkFolder::setAside) ||
        isOnTrialElsewhere(*work))
        return WatchResult::confirmed;
    return work->takeTreeBack(calls) ? WatchResult::takenBack : WatchResult::confirmed;
}

} // namespace kelo::updater
