#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo::bench {

/// How often a thread has been put to sleep and woken since it began, and for how long it ran.
struct ThreadCounts {
    std::string name;
    std::uint64_t voluntary = 0;   ///< it waited for something: each is a waking
    std::uint64_t involuntary = 0; ///< another thread was given its processor
    std::uint64_t nanoseconds = 0; ///< on a processor
};

struct ProcessCounts {
    std::string program;
    std::map<pid_t, ThreadCounts> threads;

    ThreadCounts sum() const;
};

using Wakings = std::map<pid_t, ProcessCounts>;

/// Of these processes until now, as /proc has it. What has ended is left out.
Wakings wakingsOf(const std::vector<pid_t>& processes);

/// What came to pass between two looks: of threads that ended meanwhile nothing is known; those
/// that began meanwhile count from their beginning.
Wakings wakingsBetween(const Wakings& before, const Wakings& after);

} // namespace kelo::bench
