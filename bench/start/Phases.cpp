#include "start/Phases.h"

#include "common/MomentFile.h"
#include "common/ProcessTrace.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "start/Measurement.h"
#include "start/PageCache.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

using Clock = WindowWatch::Clock;
using Phases = std::vector<std::pair<std::string, std::optional<Clock::time_point>>>;

constexpr std::chrono::seconds settling{4};

/// The kernel shows 15 characters of a program's name.
constexpr const char* networkProcess = "WebKitNetworkPr";
constexpr const char* webProcess = "WebKitWebProces";

/// Where the kernel reports processes to root alone, the phases that it would report are left out.
std::unique_ptr<ProcessTrace> traceIfAllowed(Results& results) {
    try {
        return std::make_unique<ProcessTrace>();
    } catch (const std::runtime_error& error) {
        results.note(std::string(error.what()) + " Phases of other processes are left out.");
        return nullptr;
    }
}

class Measured {
public:
    Measured(const fs::path& build, const fs::path& folder, Results& results)
        : folder(folder),
          program(build / "kelo"),
          times(folder / "times"),
          service(build, build / "demo-authority", folder / "service.log", {}, {"--times", times}),
          moments(folder / "moments"),
          trace(traceIfAllowed(results)) {}

    /// Starts that are not measured find what the others need.
    void prepare() {
        paintedFirst = findPaintedPixel(watch, "Kelo", launch(warmProfile()), log());
        paintedLater = findPaintedPixel(watch, "Kelo", launch(warmProfile()), log());
        const auto launched = launch(warmProfile());
        rig::ChildProcess process(launched.command, launched.environment, log());
        std::this_thread::sleep_for(settling);
        files = mappedFiles(process.identifier());
        endWithTree(process);
    }

    CachedFiles forget() const { return dropFromCache(files); }
    std::size_t fileCount() const { return files.size(); }

    Phases coldStart(int round) {
        return start(folder / ("cold-" + std::to_string(round)), paintedFirst);
    }
    Phases warmStart() { return start(warmProfile(), paintedLater); }

    Clock::time_point lastStart() const { return begun; }

private:
    fs::path log() const { return folder / "program.log"; }
    fs::path warmProfile() const { return folder / "warm"; }

    Launch launch(const fs::path& profile) const {
        Launch made{{program}, ownFolders(profile)};
        made.environment.merge(moments.variables());
        return made;
    }

    Phases start(const fs::path& profile, Pixel painted) {
        const auto launched = launch(profile);
        if (trace)
            trace->take();
        watch.reset();
        begun = Clock::now();
        rig::ChildProcess process(launched.command, launched.environment, log());
        const auto shown = awaitStart(watch, "Kelo", painted, begun, process);
        const auto processes = trace ? trace->take() : std::vector<ProcessEvent>();
        const auto told = moments.read();
        const auto asked = readMoments(fileText(times));
        endWithTree(process);
        return phases(process.identifier(), shown, processes, told, asked);
    }

    Phases phases(pid_t kelo, const StartTimes& shown, const std::vector<ProcessEvent>& processes,
                  const std::vector<MomentLine>& told, const std::vector<MomentLine>& asked) const {
        using Kind = ProcessEvent::Kind;
        const auto executed = [&](const std::string& name) -> std::optional<Clock::time_point> {
            for (const auto& event : processes)
                if (event.kind == Kind::executed && event.program == name)
                    return event.time;
            return std::nullopt;
        };
        // The first of its kind, by the process that has its name later.
        const auto forked = [&](const std::string& name) -> std::optional<Clock::time_point> {
            const auto later = std::ranges::find_if(processes, [&](const ProcessEvent& event) {
                return event.kind == Kind::executed && event.program == name;
            });
            for (const auto& event : processes)
                if (later != processes.end() && event.kind == Kind::forked &&
                    event.process == later->process)
                    return event.time;
            return std::nullopt;
        };
        const auto moment = [&](const char* name) { return firstMoment(told, name, begun); };
        const auto onPage = [&](const std::string& what) -> std::optional<Clock::time_point> {
            for (const auto& line : asked)
                if (line.time >= begun && line.name.starts_with(what + " GET "))
                    return line.time;
            return std::nullopt;
        };
        const auto after = [&](double milliseconds) {
            return begun + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double, std::milli>(milliseconds));
        };
        std::optional<Clock::time_point> loaded;
        for (const auto& event : processes)
            if (!loaded && event.kind == Kind::executed && event.process == kelo)
                loaded = event.time;
        return {{"program executed", loaded},
                {"main() entered (load)", moment("mainEntered")},
                {"on the bus (connect)", moment("busConnected")},
                {"toolkit started (initialise)", moment("toolkitStarted")},
                {"window mapped", after(shown.mapped)},
                {"network process forked", forked(networkProcess)},
                {"network process executing", executed(networkProcess)},
                {"web view made", moment("viewMade")},
                {"sandbox executing", executed("bwrap")},
                {"bus proxy of the sandbox executing", executed("xdg-dbus-proxy")},
                {"web process executing", executed(webProcess)},
                {"first frame drawn", moment("frameEnded")},
                {"first request at the server", onPage("asked")},
                {"first answer begun", onPage("served")},
                {"load started", moment("loadStarted")},
                {"page's first bytes here", moment("loadCommitted")},
                {"page painted", after(shown.painted)}};
    }

    const fs::path folder;
    const fs::path program;
    const fs::path times;
    const rig::DemoService service;
    const MomentFile moments;
    const WindowWatch watch;
    std::unique_ptr<ProcessTrace> trace;
    Pixel paintedFirst;
    Pixel paintedLater;
    std::set<fs::path> files;
    Clock::time_point begun;
};

struct Stretch {
    const char* name;
    const char* from;
    const char* to;
};
constexpr std::array stretches{
    Stretch{"load: execution to main()", "program executed", "main() entered (load)"},
    Stretch{"connect: main() to the bus", "main() entered (load)", "on the bus (connect)"},
    Stretch{"initialise: bus to toolkit", "on the bus (connect)", "toolkit started (initialise)"},
    Stretch{"toolkit to web view", "toolkit started (initialise)", "web view made"},
    Stretch{"web view to web process executing", "web view made", "web process executing"},
    Stretch{"web process to first request", "web process executing", "first request at the server"},
    Stretch{"the server's answer", "first request at the server", "first answer begun"},
    Stretch{"answer to the page's first bytes here", "first answer begun",
            "page's first bytes here"},
    Stretch{"page's first bytes to painted", "page's first bytes here", "page painted"},
    Stretch{"toolkit to window mapped", "toolkit started (initialise)", "window mapped"},
    Stretch{"window mapped to first frame", "window mapped", "first frame drawn"},
};

std::optional<Clock::time_point> timeOf(const Phases& phases, std::string_view name) {
    for (const auto& [phase, time] : phases)
        if (phase == name)
            return time;
    return std::nullopt;
}

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

void add(Results& results, const std::string& kind, Clock::time_point begun, const Phases& phases) {
    for (const auto& [phase, time] : phases)
        if (time)
            results.add(kind, "ms since the start", phase, milliseconds(*time - begun));
    for (const auto& stretch : stretches) {
        const auto from = timeOf(phases, stretch.from);
        const auto to = timeOf(phases, stretch.to);
        if (from && to)
            results.add(kind + ", stretches", "ms", stretch.name, milliseconds(*to - *from));
    }
}

} // namespace

void measurePhases(const fs::path& build, int rounds) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    Results results("start-phases");
    Measured kelo(build, folder.path(), results);
    kelo.prepare();
    CachedFiles left;
    for (int round = 0; round < rounds; ++round) {
        left = kelo.forget();
        const auto cold = kelo.coldStart(round);
        add(results, "cold start", kelo.lastStart(), cold);
        const auto warm = kelo.warmStart();
        add(results, "warm start", kelo.lastStart(), warm);
        std::printf("round %d of %d\n", round + 1, rounds);
        std::fflush(stdout);
    }
    constexpr double mebibyte = 1024 * 1024;
    char text[256];
    std::snprintf(text, sizeof text,
                  "Cold: a new profile, and the %zu files that the program maps (%.0f MiB) dropped "
                  "from the kernel's cache; other programs keep %.0f MiB of them there. What lies "
                  "below a virtual machine's disk keeps its own cache.",
                  kelo.fileCount(), left.size / mebibyte, left.resident / mebibyte);
    results.note(text);
    results.note("Marks of the program cost it a write each. A phase without a line was not seen.");
    results.publish(resultFolder(build));
}

} // namespace kelo::bench
