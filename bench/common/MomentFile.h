#pragma once

#include "posix/FileDescriptor.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::bench {

/// Something that happened at a time, as a line "name 4711" has it, in nanoseconds of
/// CLOCK_MONOTONIC, which is the steady clock.
struct MomentLine {
    std::string name;
    std::chrono::steady_clock::time_point time;
};

/// Lines that are not of this form are left out. Names may hold spaces.
std::vector<MomentLine> readMoments(std::string_view text);

/// The first line of this name that is not before the time.
std::optional<std::chrono::steady_clock::time_point>
firstMoment(std::span<const MomentLine> lines, std::string_view name,
            std::chrono::steady_clock::time_point notBefore = {});

/// Where a program under test tells its moments (Moments.h of the program).
class MomentFile {
public:
    /// Starts the file anew. Throws std::runtime_error.
    explicit MomentFile(const std::filesystem::path& path);

    /// Environment variables for the programs that are to tell their moments. They inherit the
    /// open file.
    std::map<std::string, std::string> variables() const;
    /// All lines so far.
    std::vector<MomentLine> read() const;

private:
    std::filesystem::path path;
    posix::FileDescriptor descriptor;
};

/// The text of a file; empty if there is none.
std::string fileText(const std::filesystem::path& file);

} // namespace kelo::bench
