#include "testing/rig/ChildProcess.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelo::rig {

namespace {

using Clock = std::chrono::steady_clock;

class Descriptor {
public:
    explicit Descriptor(int number) : number(number) {}
    ~Descriptor() {
        if (number >= 0)
            close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number; }

private:
    int number;
};

std::vector<std::string> mergedEnvironment(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> merged;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (!changes.contains(text.substr(0, text.find('='))))
            merged.push_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (!value.empty())
            merged.push_back(name + "=" + value);
    }
    return merged;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

int remainingMilliseconds(Clock::time_point end) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::map<std::string, std::string>& environment,
                           const std::filesystem::path& output)
    : output(output) {
    std::vector<std::string> arguments = command;
    std::vector<std::string> variables = mergedEnvironment(environment);
    const auto argumentPointers = pointers(arguments);
    const auto variablePointers = pointers(variables);
    const Descriptor sink(
        open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR));
    const Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (sink.get() < 0 || nothing.get() < 0)
        throw std::runtime_error("The output of " + command.front() + " cannot be kept.");
    outputBegin = std::filesystem::file_size(output);
    if (access(command.front().c_str(), X_OK) != 0)
        throw std::runtime_error("There is no program " + command.front() + ".");
    const pid_t parent = getpid();
    process = fork();
    if (process < 0)
        throw std::runtime_error(command.front() + " cannot be started.");
    if (process == 0) {
        // Only calls that are safe between fork and exec in a program with threads.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(127);
        dup2(nothing.get(), STDIN_FILENO);
        dup2(sink.get(), STDOUT_FILENO);
        dup2(sink.get(), STDERR_FILENO);
        execve(argumentPointers.front(), argumentPointers.data(), variablePointers.data());
        _exit(127);
    }
}

ChildProcess::~ChildProcess() {
    end();
}

bool ChildProcess::isRunning() {
    return !awaitExit(std::chrono::seconds(0)).has_value();
}

std::optional<int> ChildProcess::awaitExit(std::chrono::seconds deadline) {
    if (status)
        return status;
    const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    pollfd watched{handle.get(), POLLIN, 0};
    const auto end = Clock::now() + deadline;
    while (poll(&watched, 1, remainingMilliseconds(end)) < 0) {
    }
    int raw = 0;
    if (waitpid(process, &raw, WNOHANG) == process)
        status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    return status;
}

std::string ChildProcess::printed() const {
    std::ifstream file(output);
    file.seekg(static_cast<std::streamoff>(outputBegin));
    return {std::istreambuf_iterator<char>(file), {}};
}

bool ChildProcess::awaitPrinted(const std::string& text, std::chrono::seconds deadline) {
    const Descriptor changes(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    inotify_add_watch(changes.get(), output.c_str(), IN_MODIFY);
    const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    const auto end = Clock::now() + deadline;
    while (printed().find(text) == std::string::npos) {
        if (!isRunning() || Clock::now() >= end)
            return printed().find(text) != std::string::npos;
        pollfd watched[] = {{changes.get(), POLLIN, 0}, {handle.get(), POLLIN, 0}};
        poll(watched, 2, remainingMilliseconds(end));
        char events[4096];
        while (read(changes.get(), events, sizeof events) > 0) {
        }
    }
    return true;
}

void ChildProcess::end() {
    if (status)
        return;
    kill(process, SIGTERM);
    if (!awaitExit(std::chrono::seconds(10))) {
        kill(process, SIGKILL);
        awaitExit(std::chrono::seconds(10));
    }
}

} // namespace kelo::rig
