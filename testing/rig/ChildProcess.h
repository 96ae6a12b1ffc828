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

/// A program run by us, its output and errors together at the end of a file. It ends when we end,
/// whatever ends us.
class ChildProcess {
public:
    /// Runs the program with our environment changed by `environment` (an empty value removes).
    /// Throws std::runtime_error when it cannot be started.
    ChildProcess(const std::vector<std::string>& command,
                 const std::map<std::string, std::string>& environment,
                 const std::filesystem::path& output);
    /// Asks it to end (SIGTERM), and after a while makes it.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t identifier() const { return process; }
    bool isRunning();
    /// Its exit status once it has ended by itself (128 + signal if a signal ended it).
    std::optional<int> awaitExit(std::chrono::seconds deadline);
    /// What it has printed so far, without what the file held before.
    std::string printed() const;
    /// True as soon as it has printed the text; false when it ends first, or the deadline passes.
    bool awaitPrinted(const std::string& text, std::chrono::seconds deadline);
    void end();

private:
    pid_t process = -1;
    std::optional<int> status;
    std::filesystem::path output;
    std::uintmax_t outputBegin = 0;
};

} // namespace kelo::rig
