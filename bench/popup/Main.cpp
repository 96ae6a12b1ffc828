// bench-popup: how soon the voice panel is there and gone again, beside the least that a program of
// any kind can do at the same keys, and how often a Kelo that waits for the chord wakes the
// processor, beside the browser that the web engine brings along.

#include "common/BenchmarkMain.h"
#include "common/Distribution.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "common/RunningKelo.h"
#include "popup/Floor.h"
#include "popup/Idle.h"
#include "popup/Launcher.h"
#include "popup/Trial.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/screen/OtherProgram.h"

#include <cstdio>
#include <string>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

constexpr const char* page = "https://localhost:8443";

constexpr std::chrono::seconds settling{4};
constexpr std::chrono::seconds idleWindow{30};
constexpr int firstShows = 15;

constexpr int panelWidth = 640;
constexpr int panelHeight = 620;
constexpr int aboveEdge = 16;

struct Goal {
    const char* name;
    double percentile95;
};
constexpr std::array<Goal, momentCount> goals{{
    {"tap: release to mapped", 5},
    {"tap: release to first painted pixel", 17},
    {"hold: 250 ms mark to mapped", 5},
    {"tap: release to unmapped", 5},
}};

struct Place {
    int x;
    int y;
    screen::Point pixel() const { return {x + panelWidth / 2, y + panelHeight / 2}; }
};

Place panelPlace(const screen::XConnection& connection) {
    return {(connection.width() - panelWidth) / 2, connection.height() - aboveEdge - panelHeight};
}

void addTimes(Results& results, const std::string& subject, const Times& times) {
    for (std::size_t moment = 0; moment < momentCount; ++moment)
        results.add(goals[moment].name, "ms", subject, times[moment]);
}

void judge(Results& results, const Times& kelo, const std::vector<double>& first) {
    const auto note = [&](const std::string& name, double value, double limit) {
        char text[160];
        std::snprintf(text, sizeof text, "goal: %s below %.0f ms: %s", name.c_str(), limit,
                      value < limit ? "met" : "MISSED");
        results.note(text);
    };
    for (std::size_t moment = 0; moment < momentCount; ++moment)
        note(std::string("95 of 100, ") + goals[moment].name,
             distributionOf(kelo[moment]).percentile95, goals[moment].percentile95);
    note("all, first tap ever: release to mapped", distributionOf(first).highest, 120);
}

void addLauncher(Results& results, const fs::path& folder, int repetitions) {
    const auto program = installedProgram("rofi");
    if (!program)
        return results.note("Left out: rofi is not installed.");
    const screen::XConnection connection;
    const auto times = timeLauncher(*program, {connection.width() / 2, connection.height() / 2},
                                    repetitions, folder / "launcher.log");
    const std::string subject = "rofi, a new process";
    results.add(goals[0].name, "ms", subject, times.startToMapped);
    results.add(goals[1].name, "ms", subject, times.startToPainted);
    results.add(goals[3].name, "ms", subject, times.escapeToUnmapped);
    results.note("rofi: from the start of its process with an empty list, as a key binding starts "
                 "it; and from Escape to unmapped.");
}

void addIdle(Results& results, const char* name, const WakeUps& counted) {
    results.add("idle wake-ups, interface process", "/s", name, counted.interfaceProcess);
    results.add("idle wake-ups, all processes", "/s", name, counted.allProcesses);
    std::printf("%-40s %7.2f interface process, %7.2f all processes\n", name,
                counted.interfaceProcess, counted.allProcesses);
    std::fflush(stdout);
}

Times timeFloor(const Place& place, int repetitions) {
    Trial trial(panelWidth, panelHeight, place.pixel());
    const Floor floor(place.x, place.y, panelWidth, panelHeight);
    trial.firstShow();
    return trial.repeat(repetitions);
}

void measureIdle(Results& results, const fs::path& build, const fs::path& folder,
                 const Place& place) {
    std::printf("\nidle wake-ups per second, over %lld s\n",
                static_cast<long long>(idleWindow.count()));
    {
        rig::ChildProcess browser(
            {miniBrowser(), "--ignore-tls-errors", "--geometry=1100x760", page},
            ownFolders(folder / "browser"), folder / "browser.log");
        std::this_thread::sleep_for(2 * settling);
        addIdle(results, "MiniBrowser", wakeUps(browser.identifier(), idleWindow));
        endWithTree(browser);
    }
    const RunningKelo kelo(build, folder);
    std::this_thread::sleep_for(settling);
    addIdle(results, "Kelo, hotkey armed", wakeUps(kelo.identifier(), idleWindow));
    Trial trial(panelWidth, panelHeight, place.pixel());
    trial.firstShow();
    trial.putAway();
    std::this_thread::sleep_for(settling);
    addIdle(results, "Kelo, panel shown once and hidden", wakeUps(kelo.identifier(), idleWindow));
}

void run(const fs::path& build, int repetitions) {
    const screen::XConnection connection;
    awaitWindowManager();
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    const Place place = panelPlace(connection);

    std::vector<double> first;
    for (int start = 0; start < firstShows; ++start) {
        const RunningKelo kelo(build, folder.path());
        screen::OtherProgram other({0, 0, connection.width(), connection.height()});
        Trial trial(panelWidth, panelHeight, place.pixel());
        first.push_back(trial.firstShow());
        std::printf("start %d: first tap to mapped %.1f ms\n", start + 1, first.back());
        std::fflush(stdout);
    }
    Times ofKelo;
    {
        const RunningKelo kelo(build, folder.path());
        // What the user is at: it covers the screen, in one color.
        screen::OtherProgram other({0, 0, connection.width(), connection.height()});
        other.fillScreen();
        Trial trial(panelWidth, panelHeight, place.pixel());
        trial.firstShow();
        ofKelo = trial.repeat(repetitions);
    }
    screen::OtherProgram other({0, 0, connection.width(), connection.height()});
    other.fillScreen();
    Results results("popup", "Kelo");
    addTimes(results, "Kelo", ofKelo);
    addTimes(results, "floor: a bare window", timeFloor(place, repetitions));
    addLauncher(results, folder.path(), repetitions);
    results.add("first tap of a process: release to mapped", "ms", "Kelo", first);
    judge(results, ofKelo, first);
    measureIdle(results, build, folder.path(), place);
    results.publish(resultFolder(build));
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-popup", "REPETITIONS",
        [](const kelo::bench::Order& order) { kelo::bench::run(order.build, order.times); });
}
