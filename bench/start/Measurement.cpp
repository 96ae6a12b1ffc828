#include "start/Measurement.h"

#include "common/Programs.h"
#include "testing/rig/ProcessTree.h"

#include <stdexcept>
#include <thread>

namespace kelo::bench {

namespace {

using Clock = WindowWatch::Clock;

constexpr std::chrono::seconds patience{60};
constexpr std::chrono::seconds settling{4};
/// GTK lets the caret of a text field rest ten seconds after the last key.
constexpr std::chrono::seconds comingToRest{15};
constexpr std::chrono::seconds idleWindow{10};

/// The demo page's button: no toolkit of the candidates draws in this color.
constexpr std::uint32_t pageColor = 0x2f5d50;
constexpr std::size_t leastPixels = 200;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

double sum(const std::vector<pid_t>& tree, std::uint64_t (*value)(pid_t)) {
    std::uint64_t total = 0;
    for (const pid_t member : tree)
        total += value(member);
    return static_cast<double>(total);
}

/// A program that is ended with everything it started, even if it has not done what was awaited.
class Started {
public:
    Started(const Launch& launch, const std::filesystem::path& log)
        : process(launch.command, launch.environment, log) {}
    ~Started() { endWithTree(process); }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    rig::ChildProcess process;
};

[[noreturn]] void fail(const std::string& name, const rig::ChildProcess& process) {
    throw std::runtime_error(name + " did not show the page: " + process.printed());
}

IdleCost measureIdle(pid_t process) {
    constexpr double kibibytes = 1024;
    std::this_thread::sleep_for(comingToRest);
    const auto tree = rig::processTree(process);
    IdleCost cost;
    cost.interfaceMemory = static_cast<double>(rig::proportionalSetSize(process)) / kibibytes;
    cost.treeMemory = sum(tree, rig::proportionalSetSize) / kibibytes;
    const double interfaceBefore = static_cast<double>(rig::voluntarySwitches(process));
    const double treeBefore = sum(tree, rig::voluntarySwitches);
    std::this_thread::sleep_for(idleWindow);
    const double seconds = std::chrono::duration<double>(idleWindow).count();
    cost.interfaceWakeUps =
        (static_cast<double>(rig::voluntarySwitches(process)) - interfaceBefore) / seconds;
    cost.treeWakeUps = (sum(tree, rig::voluntarySwitches) - treeBefore) / seconds;
    return cost;
}

} // namespace

Pixel findPaintedPixel(const WindowWatch& watch, const std::string& name, const Launch& launch,
                       const std::filesystem::path& log) {
    const Started program(launch, log);
    const auto pixel = watch.awaitArea(pageColor, leastPixels, Clock::now() + patience);
    if (!pixel)
        fail(name, program.process);
    std::this_thread::sleep_for(settling);
    const auto settled = watch.awaitArea(pageColor, leastPixels, Clock::now() + patience);
    return settled.value_or(*pixel);
}

StartTimes awaitStart(const WindowWatch& watch, const std::string& name, Pixel painted,
                      Clock::time_point start, const rig::ChildProcess& process) {
    const auto mapped = watch.awaitMapped(start + patience);
    const auto shown = watch.awaitColor(painted, pageColor, start + patience);
    if (!mapped || !shown)
        fail(name, process);
    return {milliseconds(*mapped - start), milliseconds(*shown - start)};
}

StartTimes measure(const WindowWatch& watch, const std::string& name, const Launch& launch,
                   Pixel painted, const std::filesystem::path& log, IdleCost* cost) {
    watch.reset();
    const auto start = Clock::now();
    const Started program(launch, log);
    const auto times = awaitStart(watch, name, painted, start, program.process);
    if (cost)
        *cost = measureIdle(program.process.identifier());
    return times;
}

} // namespace kelo::bench
