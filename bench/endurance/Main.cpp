// bench-endurance: whether what Kelo has grows while it stays: memory, descriptors and threads of
// all its processes, over thousands of taps and then over hours in the tray with the hotkey armed.

#include "common/BenchmarkMain.h"
#include "common/KeloWindow.h"
#include "common/MomentFile.h"
#include "common/PanelWatch.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "common/RunningKelo.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/rig/ProcessTree.h"
#include "testing/screen/Keyboard.h"

#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

using Clock = std::chrono::steady_clock;

constexpr int taps = 2000;
constexpr int tapsBetweenLooks = 200;
constexpr std::chrono::minutes timeBetweenLooks{5};
constexpr std::chrono::milliseconds tapLength{20};
constexpr std::chrono::milliseconds pause{60};
constexpr std::chrono::seconds settling{10};
constexpr int panelWidth = 640;
constexpr int panelHeight = 620;

/// MiB that the process has written and shares with none. What it only read of a file is left out:
/// that becomes its own when another program that has mapped the file ends.
double ownMemory(pid_t process) {
    constexpr double kibibytes = 1024;
    std::istringstream lines(
        fileText(fs::path("/proc") / std::to_string(process) / "smaps_rollup"));
    double sum = 0;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("Private_Dirty:") || line.starts_with("Swap:"))
            sum += std::stod(line.substr(line.find(':') + 1));
    return sum / kibibytes;
}

class Endurance {
public:
    Endurance(const fs::path& build, const fs::path& folder, Results& results)
        : kelo(build, folder), results(results) {
        const KeloWindow window(kelo.identifier());
        window.close();
    }

    void perform(std::chrono::minutes idling) {
        // The first taps make what all later ones use.
        tapTimes(tapsBetweenLooks);
        look("taps", tapsBetweenLooks);
        for (int done = tapsBetweenLooks; done < taps; done += tapsBetweenLooks) {
            tapTimes(tapsBetweenLooks);
            look("taps", done + tapsBetweenLooks);
        }
        const auto begun = Clock::now();
        while (Clock::now() - begun < idling) {
            std::this_thread::sleep_for(timeBetweenLooks);
            const auto passed =
                std::chrono::duration_cast<std::chrono::minutes>(Clock::now() - begun);
            look("minutes in the tray", static_cast<int>(passed.count()));
        }
    }

private:
    void tapTimes(int count) {
        // Each second tap hides what the one before has shown.
        for (int pair = 0; pair < count / 2; ++pair) {
            tap();
            panel.awaitShown();
            std::this_thread::sleep_for(pause);
            tap();
            panel.awaitHidden();
            std::this_thread::sleep_for(pause);
        }
    }

    void tap() const {
        const auto control = screen::keySymbol("Control_L");
        const auto option = screen::keySymbol("Alt_L");
        keyboard.down(control);
        keyboard.down(option);
        std::this_thread::sleep_for(tapLength);
        keyboard.up(option);
        keyboard.up(control);
    }

    void look(const std::string& what, int soFar) {
        std::this_thread::sleep_for(settling);
        const auto tree = rig::processTree(kelo.identifier());
        double all = 0;
        for (const pid_t process : tree)
            all += ownMemory(process);
        const double interface = ownMemory(kelo.identifier());
        std::size_t descriptors = 0;
        for (const auto& [name, count] : rig::openDescriptors(kelo.identifier()))
            descriptors += count;
        const std::size_t threads = rig::threadCount(kelo.identifier());
        const std::string when = "after " + std::to_string(soFar) + " " + what;
        results.add("own memory, interface process", "MiB", when, interface);
        results.add("own memory, all processes", "MiB", when, all);
        results.add("descriptors, interface process", "", when, static_cast<double>(descriptors));
        results.add("threads, interface process", "", when, static_cast<double>(threads));
        std::printf("%-32s interface %6.2f MiB, %zu processes %6.2f MiB, %zu descriptors, "
                    "%zu threads\n",
                    when.c_str(), interface, tree.size(), all, descriptors, threads);
        std::fflush(stdout);
    }

    const RunningKelo kelo;
    Results& results;
    const screen::XConnection hands;
    const screen::Keyboard keyboard{hands};
    PanelWatch panel{panelWidth, panelHeight};
};

void run(const fs::path& build, std::chrono::minutes idling) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    Results results("endurance");
    Endurance(build, folder.path(), results).perform(idling);
    results.note(
        "The window is closed and the hotkey armed. Half of the taps show the voice panel, "
        "half hide it.");
    results.publish(resultFolder(build));
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-endurance", "MINUTES", [](const kelo::bench::Order& order) {
            kelo::bench::run(order.build, std::chrono::minutes(order.times));
        });
}
