#include "base/async/MainLoop.h"
#include "linux/panel/X11Screens.h"
#include "platform/EventMonitors.h"
#include "scale/Works.h"
#include "testing/rig/ChildProcess.h"
#include "voice/GlobalHotkey.h"

#include <gtk/gtk.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>

namespace kelo::bench {

namespace {

/// Its timers never fire: every press here is a tap.
class QuietLoop final : public MainLoop {
public:
    void post(std::function<void()>) override {}
    std::shared_ptr<Timer> scheduleTimer(std::chrono::duration<double>,
                                         std::function<void()>) override {
        return std::make_shared<Silent>();
    }

private:
    struct Silent final : Timer {
        void invalidate() override {}
    };
};

void runXrandr(const std::vector<std::string>& arguments, const std::filesystem::path& log) {
    std::vector<std::string> command{"/usr/bin/xrandr"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    rig::ChildProcess process(command, {}, log);
    if (process.awaitExit(std::chrono::seconds(30)) != 0)
        throw std::runtime_error("xrandr did not change the monitors: " + process.printed());
}

std::string monitorName(int number) {
    return "bench-" + std::to_string(number);
}

/// One column of the screen each.
void addMonitor(int number, const std::filesystem::path& log) {
    constexpr int width = 80;
    runXrandr({"--setmonitor", monitorName(number),
               "80/80x900/900+" + std::to_string(number * width) + "+0",
               number == 0 ? "screen" : "none"},
              log);
}

} // namespace

std::vector<GrowthSeries> hotkeyGrowth() {
    constexpr int perSecond = 200;
    const std::array<platform::ModifierFlags, 4> course{
        platform::modifier::control, platform::modifier::control | platform::modifier::option,
        platform::modifier::option, 0};
    QuietLoop loop;
    const MainLoop::Installation installation(loop);
    const auto hotkey = std::make_shared<voice::GlobalHotkey>();
    int taps = 0;
    hotkey->onTap = [&] { ++taps; };
    GrowthSeries recognizing{"hotkey: recognize taps", "changes of modifiers", {}};
    for (const int seconds : {1, 10, 50, 100, 200}) {
        const int changes = seconds * perSecond;
        const auto work = [&] {
            taps = 0;
            for (int change = 0; change < changes; ++change)
                hotkey->handleFlagsChanged(
                    course[static_cast<std::size_t>(change) % course.size()]);
            if (taps != changes / 4)
                throw std::runtime_error("Taps were lost.");
        };
        recognizing.points.push_back({static_cast<double>(changes), costOf(work)});
    }
    return {recognizing};
}

std::vector<GrowthSeries> monitorGrowth(const std::filesystem::path& folder) {
    const auto log = folder / "xrandr.log";
    if (!gtk_init_check())
        throw std::runtime_error("The toolkit found no display.");
    const panel::X11Screens screens{panel::X11Connection(gdk_display_get_default())};
    GrowthSeries placing{"panel: find its monitor and place", "monitors", {}};
    int made = 0;
    for (const int size : {1, 2, 4, 8, 16}) {
        for (; made < size; ++made)
            addMonitor(made, log);
        const auto work = [&] {
            if (!screens.mainWorkArea())
                throw std::runtime_error("No monitor was found.");
        };
        placing.points.push_back({static_cast<double>(size), costOf(work)});
    }
    for (int number = 0; number < made; ++number)
        runXrandr({"--delmonitor", monitorName(number)}, log);
    return {placing};
}

} // namespace kelo::bench
