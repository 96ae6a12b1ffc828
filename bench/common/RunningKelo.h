#pragma once

#include "testing/rig/ChildProcess.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kelo::bench {

/// A Kelo that is at rest after its start: its hotkey is armed, if it has a window, and whatever
/// the start set going is over. The demo service must run. Ends with this object.
class RunningKelo {
public:
    /// Its files are below the folder. Throws std::runtime_error if it does not get so far.
    RunningKelo(const std::filesystem::path& build, const std::filesystem::path& folder,
                const std::vector<std::string>& arguments = {},
                const std::map<std::string, std::string>& more = {});
    ~RunningKelo();
    RunningKelo(const RunningKelo&) = delete;
    RunningKelo& operator=(const RunningKelo&) = delete;

    pid_t identifier() const { return process.identifier(); }

private:
    std::string log() const;

    std::uintmax_t logBegin;
    rig::ChildProcess process;
};

} // namespace kelo::bench
