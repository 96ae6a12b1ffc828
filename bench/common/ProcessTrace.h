#pragma once

#include "common/ProcessEvents.h"

#include <cstddef>
#include <vector>

namespace kelo::bench {

/// Has the kernel write down which processes this thread starts, which they start, and which
/// programs these execute (perf_event_open). Nothing stops and nothing is polled, so that the
/// programs run as they do without it.
class ProcessTrace {
public:
    /// Begins. pages: of memory for what happens between two calls of take(), on each processor; a
    /// power of two. Throws std::runtime_error where the kernel allows it to root alone.
    explicit ProcessTrace(std::size_t pages = 16);
    ~ProcessTrace();
    ProcessTrace(const ProcessTrace&) = delete;
    ProcessTrace& operator=(const ProcessTrace&) = delete;

    /// What has happened since the last call, in the order of time.
    std::vector<ProcessEvent> take();

private:
    class Ring;
    std::vector<Ring> rings; ///< one for each processor
};

} // namespace kelo::bench
