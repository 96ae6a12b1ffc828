#pragma once

#include <chrono>
#include <sys/types.h>

namespace kelo::bench {

/// How often a second a program is woken when nothing happens, counted by what it goes to sleep
/// again (voluntary context switches of all threads).
struct WakeUps {
    double interfaceProcess = 0;
    double allProcesses = 0;
};

/// Of the process and everything it started, over that time.
WakeUps wakeUps(pid_t process, std::chrono::seconds window);

} // namespace kelo::bench
