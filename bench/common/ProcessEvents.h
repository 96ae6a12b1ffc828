#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo::bench {

/// What the kernel reports of processes.
struct ProcessEvent {
    enum class Kind { forked, executed };
    Kind kind = Kind::forked;
    pid_t process = 0;
    pid_t parent = 0;    ///< of a fork
    std::string program; ///< of an execution: the first 15 characters of its name
    std::chrono::steady_clock::time_point time;
};

/// What stands in a stretch of the kernel's records (perf_event_open) of which each ends with its
/// time: new processes and executed programs, in the records' order. New threads, new names of
/// threads, and records of other kinds are left out; so is what comes after a record that is cut
/// off.
std::vector<ProcessEvent> readRecords(std::span<const std::byte> records);

} // namespace kelo::bench
