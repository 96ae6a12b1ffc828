#pragma once

#include "testing/rig/ChildProcess.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kelo::rig {

/// Kelo as built, with its data in a folder of ours.
class KeloProcess {
public:
    /// Starts it. Cookies and passkeys are stored below `data`: a second process with the same
    /// folder is the next start of the same user. `environment` is added to the desktop's.
    KeloProcess(const std::filesystem::path& build, const std::filesystem::path& data,
                const std::filesystem::path& output, const std::vector<std::string>& arguments = {},
                const std::map<std::string, std::string>& environment = {});

    bool isRunning() { return process.isRunning(); }
    pid_t identifier() const { return process.identifier(); }
    std::optional<int> awaitExit(std::chrono::seconds deadline) {
        return process.awaitExit(deadline);
    }
    void end() { process.end(); }
    std::string printed() const { return process.printed(); }

private:
    ChildProcess process;
};

} // namespace kelo::rig
