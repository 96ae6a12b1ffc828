#include "updater/tree/ProgramStart.h"

#include "updater/tree/StartWatch.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

// In glibc 2.36 this header lacks the declaration of C linkage.
extern "C" {
#include <sys/pidfd.h>
}

#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <utility>

namespace kelo::updater {

namespace {

constexpr int patienceMilliseconds = 5 * 60 * 1000;

/// A descriptor that becomes readable when the process has closed everything it had open. None
/// where the system does not support it (an old kernel, a strict sandbox).
posix::FileDescriptor processHandle(pid_t process) {
    return posix::FileDescriptor(::pidfd_open(process, 0));
}

class SpawnActions {
public:
    SpawnActions() { ::posix_spawn_file_actions_init(&actions); }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    void silence(int descriptor) {
        ::posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
    }
    const posix_spawn_file_actions_t* get() const { return &actions; }

private:
    posix_spawn_file_actions_t actions{};
};

std::optional<pid_t> start(std::string program, std::string argument, const SpawnActions& actions) {
    std::array<char*, 3> words{program.data(), argument.data(), nullptr};
    pid_t process = 0;
    if (::posix_spawnp(&process, program.c_str(), actions.get(), nullptr, words.data(), environ) !=
        0)
        return std::nullopt;
    return process;
}

/// Waits for the process's end. Whether it exited with status 0.
bool succeeded(pid_t process) {
    int status = -1;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// False if the process still runs at the deadline.
bool endsWithin(pid_t process, std::chrono::milliseconds deadline) {
    const posix::FileDescriptor handle = processHandle(process);
    pollfd ended{handle.get(), POLLIN, 0};
    // Without a handle nothing tells of the end, so the process is trusted to end by itself.
    return !handle || ::poll(&ended, 1, static_cast<int>(deadline.count())) > 0;
}

/// A descriptor that becomes readable when this process has ended. Without a process handle it is
/// one end of a pipe; the other end is closed when this process ends.
struct EndOfThisProcess {
    posix::FileDescriptor readable;
    posix::FileDescriptor held; ///< the pipe's other end, open in this process alone

    EndOfThisProcess() : readable(processHandle(::getpid())) {
        int ends[2];
        if (!readable && ::pipe2(ends, O_CLOEXEC) == 0) {
            readable = posix::FileDescriptor(ends[0]);
            held = posix::FileDescriptor(ends[1]);
        }
    }
};

/// The null-terminated array that exec calls take.
std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> list;
    for (auto& word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    return list;
}

/// What the process is to run that is made for the time after this one. Everything in it is ready,
/// because nothing may be allocated there.
struct Successor {
    int ended = -1;   ///< readable once this process has ended
    int watcher = -1; ///< runs the watcher with its words; -1: only starts the program
    std::vector<std::string> watcherWords;
    std::vector<std::string> programWords; ///< empty: the program runs already
    std::vector<std::string> environment;
};

/// Runs in the waiting process. Makes only calls that are allowed after fork() in a process with
/// threads; in particular it allocates no memory.
[[noreturn]] void succeed(int ended, int watcher, char* const* watcherWords,
                          char* const* programWords, char* const* environment) {
    constexpr int own = endedDescriptor;
    constexpr int beyond = own + 2;
    // Inherited descriptors would keep the connections of the ended process open.
    const int moved = watcher < 0 ? -1 : ::fcntl(watcher, F_DUPFD_CLOEXEC, beyond);
    if (ended != own && ::dup2(ended, own) < 0)
        ::_exit(1);
    if (ended == own)
        ::fcntl(own, F_SETFD, 0);
    const int program = moved < 0 ? -1 : ::dup3(moved, own + 1, O_CLOEXEC);
    ::close_range(program < 0 ? own + 1 : beyond, UINT_MAX, 0);
    ::setsid();
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    if (program >= 0)
        ::execveat(program, "", watcherWords, environment, AT_EMPTY_PATH);
    pollfd end{own, POLLIN, 0};
    if (!programWords || ::poll(&end, 1, patienceMilliseconds) <= 0)
        ::_exit(1);
    ::close(own);
    ::execve(programWords[0], programWords, environment);
    ::_exit(127);
}

bool launch(Successor successor) {
    const auto watcherWords = pointers(successor.watcherWords);
    const auto programWords = pointers(successor.programWords);
    const auto variables = pointers(successor.environment);
    const pid_t between = ::fork();
    if (between < 0)
        return false;
    if (between == 0) {
        // A second fork, so that the waiting process is not our child and nobody has to wait for
        // it.
        const pid_t waiting = ::fork();
        if (waiting == 0)
            succeed(successor.ended, successor.watcher, watcherWords.data(),
                    successor.programWords.empty() ? nullptr : programWords.data(),
                    variables.data());
        ::_exit(waiting < 0 ? 1 : 0);
    }
    return succeeded(between);
}

std::vector<std::string> ownEnvironment() {
    std::vector<std::string> settings;
    for (char** setting = environ; *setting; ++setting)
        settings.emplace_back(*setting);
    return settings;
}

} // namespace

bool printsHelp(const std::filesystem::path& program, std::chrono::milliseconds deadline) {
    SpawnActions actions;
    for (const int descriptor : {0, 1, 2})
        actions.silence(descriptor);
    const auto process = start(program, "--help", actions);
    if (!process)
        return false;
    if (!endsWithin(*process, deadline))
        ::kill(*process, SIGKILL);
    return succeeded(*process);
}

bool opensFile(const std::string& program, const std::string& argument,
               std::chrono::milliseconds deadline) {
    SpawnActions actions;
    actions.silence(0);
    const auto process = start(program, argument, actions);
    if (!process)
        return false;
    if (!endsWithin(*process, deadline))
        return true;
    return succeeded(*process);
}

bool relaunchAfterThisProcess(const std::filesystem::path& program,
                              const std::vector<std::string>& environment) {
    // Static, because the waiting process watches for these descriptors to be closed.
    static EndOfThisProcess end;
    return end.readable && launch({end.readable.get(), -1, {}, {program.string()}, environment});
}

posix::FileDescriptor openStartWatcher(const std::filesystem::path& root) {
    return posix::FileDescriptor(::open((root / startWatcherPath).c_str(), O_PATH | O_CLOEXEC));
}

bool relaunchWatched(const posix::FileDescriptor& watcher, const std::filesystem::path& root,
                     const std::vector<std::string>& environment) {
    static EndOfThisProcess end;
    const std::string program = root / "bin" / "kelo";
    return end.readable && launch({end.readable.get(),
                                   watcher.get(),
                                   {startWatcherPath, "relaunch", root.string(), program},
                                   {program},
                                   environment});
}

bool watchThisProcess(const posix::FileDescriptor& watcher, const std::filesystem::path& root,
                      const std::vector<std::string>& words) {
    // Only a handle of the process outlives the change of its program; a pipe does not.
    const posix::FileDescriptor self = processHandle(::getpid());
    if (!self || !watcher)
        return false;
    Successor successor{self.get(),
                        watcher.get(),
                        {startWatcherPath, "watch", root.string()},
                        {},
                        ownEnvironment()};
    successor.watcherWords.insert(successor.watcherWords.end(), words.begin(), words.end());
    return launch(std::move(successor));
}

} // namespace kelo::updater
