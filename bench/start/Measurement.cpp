#include "start/Measurement.h"

#include "common/Programs.h"
#include "testing/rig/ChildProcess.h"
#include "testing/rig/ProcessTree.h"

#include <stdexcept>
#include <thread>

namespace kelo::bench {

namespace {

using Clock = WindowWatch::Clock;

constexpr std::chrono::seconds patience{60};
constexpr std::chrono::seconds settling{4};
constexpr std::chrono::seconds idleWindow{10};

/// The demo page's button: no toolkit of the candidates draws in this color.
constexpr std::uint32_t pageColor = 0x2f5d50;
constexpr std::size_t leastPixels = 200;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

double mebibytes(std::uint64_t kibibytes) {
    return static_cast<double>(kibibytes) / 1024;
}

double sum(const std::vector<pid_t>& tree, std::uint64_t (*value)(pid_t)) {
    std::uint64_t total = 0;
    for (const pid_t member : tree)
        total += value(member);
    return static_cast<double>(total);
}

double& at(Sample& sample, Quantity quantity) {
    return sample[static_cast<std::size_t>(quantity)];
}

} // namespace

Pixel findPaintedPixel(const WindowWatch& watch, const Candidate& candidate,
                       const std::filesystem::path& log) {
    rig::ChildProcess process(candidate.command, candidate.environment, log);
    const auto pixel = watch.awaitArea(pageColor, leastPixels, Clock::now() + patience);
    if (!pixel)
        throw std::runtime_error(candidate.name + " did not show the page: " + process.printed());
    std::this_thread::sleep_for(settling);
    const auto settled = watch.awaitArea(pageColor, leastPixels, Clock::now() + patience);
    endWithTree(process);
    return settled.value_or(*pixel);
}

Sample measure(const WindowWatch& watch, const Candidate& candidate,
               const std::filesystem::path& log) {
    Sample sample{};
    watch.reset();
    const auto start = Clock::now();
    rig::ChildProcess process(candidate.command, candidate.environment, log);
    const auto mapped = watch.awaitMapped(start + patience);
    const auto painted = watch.awaitColor(candidate.painted, pageColor, start + patience);
    if (!mapped || !painted)
        throw std::runtime_error(candidate.name + " did not show the page: " + process.printed());
    at(sample, Quantity::mapped) = milliseconds(*mapped - start);
    at(sample, Quantity::painted) = milliseconds(*painted - start);

    std::this_thread::sleep_for(settling);
    const auto tree = rig::processTree(process.identifier());
    const auto pid = process.identifier();
    at(sample, Quantity::interfaceMemory) = mebibytes(rig::proportionalSetSize(pid));
    at(sample, Quantity::treeMemory) = sum(tree, rig::proportionalSetSize) / 1024;

    const double interfaceBefore = static_cast<double>(rig::voluntarySwitches(pid));
    const double treeBefore = sum(tree, rig::voluntarySwitches);
    std::this_thread::sleep_for(idleWindow);
    const double seconds = std::chrono::duration<double>(idleWindow).count();
    at(sample, Quantity::interfaceWakeUps) =
        (static_cast<double>(rig::voluntarySwitches(pid)) - interfaceBefore) / seconds;
    at(sample, Quantity::treeWakeUps) = (sum(tree, rig::voluntarySwitches) - treeBefore) / seconds;
    endWithTree(process);
    return sample;
}

} // namespace kelo::bench
