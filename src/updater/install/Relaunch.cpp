#include "updater/install/Relaunch.h"

#include "updater/install/ProcessHandle.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <utility>

namespace kelo::updater {

namespace {

constexpr int patienceMilliseconds = 5 * 60 * 1000;
constexpr int lastStandardStream = 2;

/// Ready to read when this process has ended. A process handle says so when everything of the
/// process is closed; where there is none, the far end of a pipe is closed at about that time.
struct EndOfThisProcess {
    posix::FileDescriptor readable;
    posix::FileDescriptor held; ///< to stay open in this process, and in no other

    EndOfThisProcess() : readable(processHandle(::getpid())) {
        int ends[2];
        if (!readable && ::pipe2(ends, O_CLOEXEC) == 0) {
            readable = posix::FileDescriptor(ends[0]);
            held = posix::FileDescriptor(ends[1]);
        }
    }
};

/// What the words of an exec call point to.
std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> list;
    for (auto& word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    return list;
}

/// In the process that waits. Only calls that are allowed after fork() in a process with threads;
/// no memory is asked for.
[[noreturn]] void waitAndStart(int ended, char* const* words, char* const* environment) {
    // What this process shares with the other would keep the other's connections open.
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

bool relaunchAfterThisProcess(const std::filesystem::path& program,
                              const std::vector<std::string>& environment) {
    // Kept open until this process ends: that is what is waited for.
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
        // Twice, so that the one who waits is nobody's child here and is never waited for.
        const pid_t waiting = ::fork();
        if (waiting == 0)
            waitAndStart(end.readable.get(), wordList.data(), variableList.data());
        ::_exit(waiting < 0 ? 1 : 0);
    }
    int status = 0;
    while (::waitpid(between, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace kelo::updater
