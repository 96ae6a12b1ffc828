// bench-memory: what the memory of Kelo's interface process is for, mapping by mapping, beside the
// barest program of the same toolkit and engine on the same page.

#include "common/BenchmarkMain.h"
#include "common/KeloWindow.h"
#include "common/Mappings.h"
#include "common/MomentFile.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "common/RunningKelo.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

using Shares = std::map<std::string, MemoryShare>;

constexpr const char* page = "https://localhost:8443";
constexpr const char* bare = "floor: WebKitGTK 6 view";
constexpr double kibibytes = 1024;
constexpr std::size_t librariesShown = 40;
constexpr std::chrono::seconds settling{4};

std::vector<Mapping> mappingsOf(pid_t process) {
    const auto mappings =
        readMappings(fileText(fs::path("/proc") / std::to_string(process) / "smaps"));
    if (mappings.empty())
        throw std::runtime_error("The memory of a process may not be looked at.");
    return mappings;
}

std::vector<Mapping> mappingsOfFloor(const fs::path& build, const fs::path& folder) {
    auto environment = ownFolders(folder / "floor");
    environment["GSK_RENDERER"] = "cairo";
    rig::ChildProcess view({build / "bench-floor-view", page}, environment, folder / "floor.log");
    const WindowWatch watch;
    if (!watch.awaitArea(accentColor, leastAccentPixels,
                         WindowWatch::Clock::now() + std::chrono::seconds(60)))
        throw std::runtime_error("The floor did not show the page: " + view.printed());
    std::this_thread::sleep_for(settling);
    auto mappings = mappingsOf(view.identifier());
    endWithTree(view);
    return mappings;
}

MemoryShare shareIn(const Shares& shares, const std::string& name) {
    const auto found = shares.find(name);
    return found != shares.end() ? found->second : MemoryShare{};
}

void printRow(const std::string& name, const MemoryShare& kelo, const MemoryShare& floor) {
    std::printf("%-52.52s %9.2f %9.2f %9.2f %9.2f  %9.2f  %+9.2f\n", name.c_str(),
                kelo.proportional / kibibytes, kelo.privateDirty / kibibytes,
                kelo.privateClean / kibibytes, kelo.shared / kibibytes,
                floor.proportional / kibibytes,
                (kelo.proportional - floor.proportional) / kibibytes);
}

void print(const char* title, const Shares& kelo, const Shares& floor, std::size_t most) {
    std::printf("\n%-52s %9s %9s %9s %9s  %9s  %9s\n", title, "PSS", "private", "private", "shared",
                "floor's", "Kelo has");
    std::printf("%-52s %9s %9s %9s %9s  %9s  %9s\n", "MiB", "", "dirty", "clean", "", "PSS",
                "more");
    std::vector<std::pair<std::string, MemoryShare>> rows(kelo.begin(), kelo.end());
    std::ranges::sort(rows, [](const auto& one, const auto& other) {
        return one.second.proportional > other.second.proportional;
    });
    MemoryShare ofKelo;
    MemoryShare ofFloor;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        ofKelo += rows[index].second;
        if (index < most)
            printRow(rows[index].first, rows[index].second, shareIn(floor, rows[index].first));
    }
    for (const auto& [name, share] : floor)
        ofFloor += share;
    printRow("all", ofKelo, ofFloor);
}

void add(Results& results, const std::string& subject, const Shares& shares) {
    for (const auto& [name, share] : shares) {
        const auto addShare = [&](const char* kind, double value) {
            results.add(subject + ": " + kind, "MiB", name, value / kibibytes);
        };
        addShare("proportional", share.proportional);
        addShare("private dirty", share.privateDirty);
        addShare("private clean", share.privateClean);
        addShare("shared", share.shared);
    }
}

void run(const fs::path& build) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    const auto floor = mappingsOfFloor(build, folder.path());
    const RunningKelo program(build, folder.path());
    const KeloWindow window(program.identifier());
    const auto kelo = mappingsOf(program.identifier());

    print("what it is for", byGroup(kelo), byGroup(floor), byGroup(kelo).size());
    print("library or file", byLibrary(kelo), byLibrary(floor), librariesShown);
    std::printf(
        "\nPSS: each shared page divided among its processes. Both programs draw with cairo, "
        "and show the same page. Of a library that the floor has too, only the difference "
        "is Kelo's.\n");
    Results results("memory");
    add(results, "Kelo", byGroup(kelo));
    add(results, bare, byGroup(floor));
    const auto target = resultFolder(build);
    writeText(target / "memory.json", results.json());
    writeText(target / "memory.svg", results.picture());
    std::printf("\nWritten: %s and .svg\n", (target / "memory.json").c_str());
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-memory", nullptr,
        [](const kelo::bench::Order& order) { kelo::bench::run(order.build); });
}
