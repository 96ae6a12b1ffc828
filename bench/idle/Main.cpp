// bench-idle: how often each process of Kelo wakes the processor while nobody does anything, in the
// states in which the program spends its days.

#include "common/BenchmarkMain.h"
#include "common/KeloWindow.h"
#include "common/PanelWatch.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "common/RunningKelo.h"
#include "common/Wakings.h"
#include "component/gtk/DesktopOnBus.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/rig/ProcessTree.h"
#include "testing/screen/Keyboard.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds settling{5};
constexpr std::chrono::milliseconds tapLength{40};
constexpr int panelWidth = 640;
constexpr int panelHeight = 620;
constexpr std::size_t threadsShown = 6;

/// Waits, while the tray answers.
void wait(std::chrono::milliseconds time) {
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    g_timeout_add_once(
        static_cast<guint>(time.count()),
        [](gpointer waiting) { g_main_loop_quit(static_cast<GMainLoop*>(waiting)); }, loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

class Idle {
public:
    Idle(const fs::path& build, const fs::path& folder, std::chrono::minutes window,
         Results& results)
        : build(build), folder(folder), window(window), results(results) {}

    void perform() {
        {
            const RunningKelo kelo(build, folder, {"--background"});
            count("tray, no window yet, hotkey not armed", kelo);
        }
        const RunningKelo kelo(build, folder);
        const KeloWindow mainWindow(kelo.identifier());
        count("window open, hotkey armed", kelo);
        mainWindow.close();
        count("tray, window closed, hotkey armed", kelo);
        tap();
        panel.awaitShown();
        wait(settling);
        tap();
        panel.awaitHidden();
        count("the same, panel shown once and hidden", kelo);
    }

private:
    void tap() const {
        const auto control = screen::keySymbol("Control_L");
        const auto option = screen::keySymbol("Alt_L");
        keyboard.down(control);
        keyboard.down(option);
        wait(tapLength);
        keyboard.up(option);
        keyboard.up(control);
    }

    void count(const std::string& state, const RunningKelo& kelo) {
        wait(settling);
        const auto before = wakingsOf(rig::processTree(kelo.identifier()));
        wait(window);
        const auto between = wakingsBetween(before, wakingsOf(rig::processTree(kelo.identifier())));
        const auto minutes = static_cast<double>(window.count());
        ThreadCounts all;
        std::vector<std::pair<std::string, ThreadCounts>> threads;
        for (const auto& [process, counts] : between) {
            const auto sum = counts.sum();
            add(state, counts.program, sum, minutes);
            all.voluntary += sum.voluntary;
            all.involuntary += sum.involuntary;
            all.nanoseconds += sum.nanoseconds;
            for (const auto& [identifier, thread] : counts.threads)
                threads.emplace_back(counts.program, thread);
        }
        add(state, "all processes", all, minutes);
        printThreads(state, std::move(threads), minutes);
    }

    void add(const std::string& state, const std::string& subject, const ThreadCounts& counts,
             double minutes) {
        constexpr double millisecond = 1e6;
        results.add(state + ": wake-ups", "/min", subject,
                    static_cast<double>(counts.voluntary) / minutes);
        results.add(state + ": taken off the processor", "/min", subject,
                    static_cast<double>(counts.involuntary) / minutes);
        results.add(state + ": processor time", "ms/min", subject,
                    static_cast<double>(counts.nanoseconds) / millisecond / minutes);
    }

    static void printThreads(const std::string& state,
                             std::vector<std::pair<std::string, ThreadCounts>> threads,
                             double minutes) {
        std::ranges::sort(threads, [](const auto& one, const auto& other) {
            return one.second.voluntary > other.second.voluntary;
        });
        std::printf("\n%s: threads that woke most\n", state.c_str());
        for (std::size_t index = 0; index < std::min(threadsShown, threads.size()); ++index) {
            const auto& [program, thread] = threads[index];
            std::printf("  %-18s %-18s %9.1f /min\n", program.c_str(), thread.name.c_str(),
                        static_cast<double>(thread.voluntary) / minutes);
        }
        std::fflush(stdout);
    }

    const fs::path build;
    const fs::path folder;
    const std::chrono::minutes window;
    Results& results;
    const tests::DesktopOnBus tray{true};
    const screen::XConnection hands;
    const screen::Keyboard keyboard{hands};
    PanelWatch panel{panelWidth, panelHeight};
};

void run(const fs::path& build, std::chrono::minutes window) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    Results results("idle");
    Idle(build, folder.path(), window, results).perform();
    results.note("Counted by the kernel for every thread: voluntary and involuntary context "
                 "switches (/proc/PID/task/*/status) and time on a processor (schedstat).");
    results.note("A process that runs several times has several values on its line.");
    results.note(
        "The tray takes the item and asks it for nothing. The hotkey is armed with the first "
        "window. Kelo watches its own program's folder: what is built there meanwhile wakes it.");
    results.publish(resultFolder(build));
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-idle", "MINUTES", [](const kelo::bench::Order& order) {
            kelo::bench::run(order.build, std::chrono::minutes(order.times));
        });
}
