#include "updater/install/ProgramStart.h"

#include "posix/FileDescriptor.h"

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
constexpr int lastStandardStream = 2;

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

/// Runs in the waiting process. Makes only calls that are allowed after fork() in a process with
/// threads; in particular it allocates no memory.
[[noreturn]] void waitAndStart(int ended, char* const* words, char* const* environment) {
    // Inherited descriptors would keep the connections of the ended process open.
    const int own = lastStandardStream + 1;
    if (ended != own && ::dup2(ended, own) < 0)
        ::_exit(1);
    ::close_range(own + 1, UINT_MAX, 0);
    ::setsid();
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    pollfd end{own, POLLIN, 0};
    if (::poll(&end, 1, patienceMilliseconds) <= 0)
        ::_exit(1);
    ::close(own);
    ::execve(words[0], words, environment);
    ::_exit(127);
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
    if (!end.readable)
        return false;
    std::vector<std::string> words{program.string()};
    std::vector<std::string> variables = environment;
    const auto wordList = pointers(words);
    const auto variableList = pointers(variables);
    const pid_t between = ::fork();
    if (between < 0)
        return false;
    if (between == 0) {
        // A second fork, so that the waiting process is not our child and nobody has to wait for
        // it.
        const pid_t waiting = ::fork();
        if (waiting == 0)
            waitAndStart(end.readable.get(), wordList.data(), variableList.data());
        ::_exit(waiting < 0 ? 1 : 0);
    }
    return succeeded(between);
}

} // namespace kelo::updater
