#include "updater/install/ProgramProbe.h"

#include "updater/install/ProcessHandle.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <string>

namespace kelo::updater {

namespace {

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

int waitFor(pid_t process) {
    int status = -1;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// False when the time is over first.
bool endsWithin(pid_t process, std::chrono::milliseconds deadline) {
    const posix::FileDescriptor handle = processHandle(process);
    pollfd ended{handle.get(), POLLIN, 0};
    // Without the call (an old kernel, a strict sandbox) the process is trusted to end.
    return !handle || ::poll(&ended, 1, static_cast<int>(deadline.count())) > 0;
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
    const int status = waitFor(*process);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
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
    const int status = waitFor(*process);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace kelo::updater
