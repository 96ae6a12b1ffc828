#pragma once

#include <chrono>
#include <sys/types.h>

namespace kelo::bench {

/// How often per second an idle program is woken, counted by the voluntary context switches of all
/// threads.
struct WakeUps {
    double interfaceProcess = 0;
    double allProcesses = 0;
};

/// Of the process and everything it started, over that time.
WakeUps wakeUps(pid_t process, std::chrono::seconds window);

} // namespace kelo::bench
