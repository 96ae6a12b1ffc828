#include "popup/Idle.h"

#include "testing/rig/ProcessTree.h"

#include <thread>

namespace kelo::bench {

WakeUps wakeUps(pid_t process, std::chrono::seconds window) {
    const auto tree = rig::processTree(process);
    const auto count = [&] {
        double all = 0;
        for (const pid_t member : tree)
            all += static_cast<double>(rig::voluntarySwitches(member));
        return WakeUps{static_cast<double>(rig::voluntarySwitches(process)), all};
    };
    const auto seconds = static_cast<double>(window.count());
    const WakeUps before = count();
    std::this_thread::sleep_for(window);
    const WakeUps after = count();
    return {(after.interfaceProcess - before.interfaceProcess) / seconds,
            (after.allProcesses - before.allProcesses) / seconds};
}

} // namespace kelo::bench
