#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo::rig {

/// A child process. Its output and errors are appended to a file. It is ended when this process
/// ends, even by a signal.
class ChildProcess {
public:
    /// Runs the program with our environment changed by `environment` (an empty value removes).
    /// Throws std::runtime_error when it cannot be started.
    ChildProcess(const std::vector<std::string>& command,
                 const std::map<std::string, std::string>& environment,
                 const std::filesystem::path& output);
    /// Sends SIGTERM, and SIGKILL if it has not ended after a while.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t identifier() const { return process; }
    bool isRunning();
    /// Its exit status (128 + signal if a signal ended it); empty while it runs.
    std::optional<int> awaitExit(std::chrono::seconds deadline);
    /// What it has printed so far, without what the file held before.
    std::string printed() const;
    /// Waits until it has printed the text; false if it ends or the deadline passes first.
    bool awaitPrinted(const std::string& text, std::chrono::seconds deadline);
    void end();

private:
    pid_t process = -1;
    std::optional<int> status;
    std::filesystem::path output;
    std::uintmax_t outputBegin = 0;
};

} // namespace kelo::rig
