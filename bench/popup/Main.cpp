// bench-popup: how soon the voice panel is there and gone again, beside the least that a program of
// any kind can do at the same keys, and how often a Kelo that waits for the chord wakes the
// processor, beside the browser that the web engine brings along.

#include "common/Distribution.h"
#include "common/Programs.h"
#include "popup/Floor.h"
#include "popup/Idle.h"
#include "popup/Trial.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/screen/OtherProgram.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

constexpr const char* page = "https://localhost:8443";
constexpr const char* logFile = "/tmp/kelo-debug.log";

constexpr std::chrono::seconds patience{60};
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

void awaitWindowManager(const screen::Windows& windows) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!windows.hasManager()) {
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error("No window manager has started.");
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

/// A start of Kelo with the hotkey armed and its window's page loaded.
class Kelo {
public:
    Kelo(const fs::path& build, const fs::path& folder)
        : logBegin(fs::exists(logFile) ? fs::file_size(logFile) : 0),
          process({build / "kelo"}, ownFolders(folder / "kelo"), folder / "kelo.log") {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (log().find("hotkey.start global=true") == std::string::npos) {
            if (std::chrono::steady_clock::now() >= deadline)
                throw std::runtime_error("Kelo's hotkey was not armed: " + log() +
                                         process.printed());
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::this_thread::sleep_for(settling);
    }
    ~Kelo() { endWithTree(process); }
    Kelo(const Kelo&) = delete;
    Kelo& operator=(const Kelo&) = delete;

    pid_t identifier() const { return process.identifier(); }

private:
    std::string log() const {
        std::ifstream file(logFile);
        file.seekg(static_cast<std::streamoff>(logBegin));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::uintmax_t logBegin;
    rig::ChildProcess process;
};

struct Place {
    int x;
    int y;
    screen::Point pixel() const { return {x + panelWidth / 2, y + panelHeight / 2}; }
};

Place panelPlace(const screen::XConnection& connection) {
    return {(connection.width() - panelWidth) / 2, connection.height() - aboveEdge - panelHeight};
}

void printLine(const std::string& name, const Distribution& times) {
    std::printf("%-40s %7.2f %7.2f %7.2f %7.2f", name.c_str(), times.lowest, times.median,
                times.percentile95, times.highest);
}

void printTimes(const Times& kelo, const Times& floor, const std::vector<double>& first) {
    std::printf("\n%-40s %7s %7s %7s %7s   goal\n", "milliseconds", "min", "median", "p95", "max");
    for (std::size_t moment = 0; moment < momentCount; ++moment) {
        const auto& goal = goals[moment];
        const auto ofKelo = distributionOf(kelo[moment]);
        const auto ofFloor = distributionOf(floor[moment]);
        printLine(goal.name, ofKelo);
        std::printf("   p95 < %.0f: %s\n", goal.percentile95,
                    ofKelo.percentile95 < goal.percentile95 ? "met" : "MISSED");
        printLine("    the floor", ofFloor);
        std::printf("   Kelo's median is %.1f times that\n", ofKelo.median / ofFloor.median);
    }
    const auto ofFirst = distributionOf(first);
    printLine("first tap ever: release to mapped", ofFirst);
    std::printf("   < 120: %s (%zu starts)\n", ofFirst.highest < 120 ? "met" : "MISSED",
                ofFirst.count);
}

void printIdle(const char* name, const WakeUps& counted) {
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

void measureIdle(const fs::path& build, const fs::path& folder, const Place& place) {
    std::printf("\nidle wake-ups per second, over %lld s\n",
                static_cast<long long>(idleWindow.count()));
    {
        rig::ChildProcess browser(
            {miniBrowser(), "--ignore-tls-errors", "--geometry=1100x760", page},
            ownFolders(folder / "browser"), folder / "browser.log");
        std::this_thread::sleep_for(2 * settling);
        printIdle("MiniBrowser", wakeUps(browser.identifier(), idleWindow));
        endWithTree(browser);
    }
    const Kelo kelo(build, folder);
    std::this_thread::sleep_for(settling);
    printIdle("Kelo, hotkey armed", wakeUps(kelo.identifier(), idleWindow));
    Trial trial(panelWidth, panelHeight, place.pixel());
    trial.firstShow();
    trial.putAway();
    std::this_thread::sleep_for(settling);
    printIdle("Kelo, panel shown once and hidden", wakeUps(kelo.identifier(), idleWindow));
}

void run(const fs::path& build, int repetitions) {
    const screen::XConnection connection;
    awaitWindowManager(screen::Windows(connection));
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    const Place place = panelPlace(connection);

    std::vector<double> first;
    for (int start = 0; start < firstShows; ++start) {
        const Kelo kelo(build, folder.path());
        screen::OtherProgram other({0, 0, connection.width(), connection.height()});
        Trial trial(panelWidth, panelHeight, place.pixel());
        first.push_back(trial.firstShow());
        std::printf("start %d: first tap to mapped %.1f ms\n", start + 1, first.back());
        std::fflush(stdout);
    }
    Times ofKelo;
    {
        const Kelo kelo(build, folder.path());
        // What the user is at: it covers the screen, in one color.
        screen::OtherProgram other({0, 0, connection.width(), connection.height()});
        other.fillScreen();
        Trial trial(panelWidth, panelHeight, place.pixel());
        trial.firstShow();
        ofKelo = trial.repeat(repetitions);
    }
    screen::OtherProgram other({0, 0, connection.width(), connection.height()});
    other.fillScreen();
    printTimes(ofKelo, timeFloor(place, repetitions), first);
    std::fflush(stdout);
    measureIdle(build, folder.path(), place);
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    try {
        const int repetitions = count == 3 ? std::stoi(arguments[2]) : 0;
        if (repetitions < 1) {
            std::cerr << "Usage: bench-popup BUILD-FOLDER REPETITIONS\n";
            return 2;
        }
        kelo::bench::run(std::filesystem::absolute(arguments[1]), repetitions);
    } catch (const std::exception& error) {
        std::cerr << "bench-popup: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
