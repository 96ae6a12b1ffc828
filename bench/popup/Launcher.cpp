#include "popup/Launcher.h"

#include "testing/rig/ChildProcess.h"

#include <stdexcept>

namespace kelo::bench {

namespace {

using Clock = PaintWatch::Clock;

constexpr std::chrono::seconds patience{30};
constexpr std::chrono::milliseconds quiet{120};
constexpr std::chrono::seconds longestUnrest{2};
constexpr int leastSize = 40;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

} // namespace

LauncherTimes timeLauncher(const std::filesystem::path& program, screen::Point pixel,
                           int repetitions, const std::filesystem::path& log) {
    LauncherTimes times;
    const PaintWatch paint;
    const screen::XConnection hands;
    const screen::Keyboard keyboard(hands);
    PanelWatch panel(leastSize, leastSize);
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        paint.awaitQuiet(quiet, Clock::now() + longestUnrest);
        paint.forget();
        panel.forget();
        panel.expectAnother();
        const auto before = paint.color(pixel);
        const auto start = Clock::now();
        // Its standard input is empty: an empty list.
        rig::ChildProcess process({program, "-dmenu"}, {}, log);
        const auto mapped = panel.awaitShown();
        const auto painted = paint.awaitChange(pixel, before, Clock::now() + patience);
        if (!painted)
            throw std::runtime_error("The launcher was not painted: " + process.printed());
        paint.awaitQuiet(quiet, Clock::now() + longestUnrest);
        const auto pressed = Clock::now();
        keyboard.press(screen::keySymbol("Escape"));
        const auto gone = panel.awaitHidden();
        process.awaitExit(patience);
        times.startToMapped.push_back(milliseconds(mapped - start));
        times.startToPainted.push_back(milliseconds(*painted - start));
        times.escapeToUnmapped.push_back(milliseconds(gone - pressed));
    }
    return times;
}

} // namespace kelo::bench
