#include "common/KeloWindow.h"
#include "common/RunningKelo.h"
#include "common/Wakings.h"
#include "scale/Works.h"
#include "testing/rig/DemoService.h"
#include "testing/screen/Keyboard.h"

#include <thread>

namespace kelo::bench {

namespace {

constexpr std::chrono::seconds length{4};
constexpr std::chrono::seconds settling{5};

/// One key down and up again and again, so often a second. Returns the milliseconds of processor
/// time that the program took meanwhile.
double costOfPresses(const RunningKelo& kelo, const screen::XConnection& hands,
                     int changesPerSecond) {
    const screen::Keyboard keyboard(hands);
    const auto control = screen::keySymbol("Control_L");
    const auto before = wakingsOf({kelo.identifier()});
    const auto begun = std::chrono::steady_clock::now();
    const int changes = changesPerSecond * static_cast<int>(length.count());
    for (int change = 0; change < changes; ++change) {
        if (change % 2 == 0)
            keyboard.down(control);
        else
            keyboard.up(control);
        std::this_thread::sleep_until(begun + length * (change + 1) / changes);
    }
    const auto spent =
        wakingsBetween(before, wakingsOf({kelo.identifier()})).at(kelo.identifier()).sum();
    constexpr double perMillisecond = 1e6;
    return static_cast<double>(spent.nanoseconds) / perMillisecond;
}

} // namespace

std::vector<GrowthSeries> pressGrowth(const std::filesystem::path& build,
                                      const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    const rig::DemoService service(build, build / "demo-authority", folder / "service.log");
    const RunningKelo kelo(build, folder);
    // A page that is shown costs more than all presses.
    KeloWindow(kelo.identifier()).close();
    std::this_thread::sleep_for(settling);
    const screen::XConnection hands;
    GrowthSeries pressing{
        "hotkey: processor time of Kelo in 4 s of presses", "changes of modifiers a second", {}};
    for (const int rate : {50, 100, 200, 400, 800})
        pressing.points.push_back({static_cast<double>(rate), costOfPresses(kelo, hands, rate)});
    return {pressing};
}

} // namespace kelo::bench
