// bench-start: how long Kelo takes to show its window and its page, what it weighs then, and how
// often it wakes the processor when nothing happens, beside the browsers that are installed and the
// least that toolkit and engine allow, on the same page. The rounds are interleaved, so that what
// else the machine does meanwhile falls on all alike. With --phases: where the time of a start
// goes.

#include "common/Programs.h"
#include "common/Results.h"
#include "start/Candidates.h"
#include "start/Measurement.h"
#include "start/Phases.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

class Comparison {
public:
    Comparison(const fs::path& build, const fs::path& folder)
        : folder(folder),
          authority(build / "demo-authority"),
          service(build, authority, folder / "service.log"),
          all(candidates(build, authority, folder, results)) {}

    /// Finds where each colours its page. Whoever does not show it is left out.
    void prepare() {
        leaveOutWhoFails([&](Candidate& each) {
            each.paintedFirst = findPaintedPixel(watch, each.name, each.launch(kept(each)), log());
            each.paintedLater = findPaintedPixel(watch, each.name, each.launch(kept(each)), log());
        });
    }

    void perform(int round) {
        // Every round begins with another candidate.
        std::rotate(all.begin(), all.begin() + (round > 0 ? 1 : 0), all.end());
        std::printf("round %d, from %s\n", round + 1, all.front().name.c_str());
        std::fflush(stdout);
        leaveOutWhoFails([&](const Candidate& each) { measureBoth(each, round); });
    }

    void publish(const fs::path& target) const { results.publish(target); }

private:
    fs::path log() const { return folder / "program.log"; }
    fs::path kept(const Candidate& each) const { return folder / "kept" / each.name; }

    template <typename Work>
    void leaveOutWhoFails(const Work& work) {
        for (auto each = all.begin(); each != all.end();) {
            try {
                work(*each);
                ++each;
            } catch (const std::runtime_error& error) {
                if (each->name == "Kelo")
                    throw;
                results.drop(each->name);
                results.note("Left out: " + each->name + " failed. " + error.what());
                each = all.erase(each);
            }
        }
    }

    void measureBoth(const Candidate& each, int round) {
        const auto fresh = folder / "fresh" / (each.name + std::to_string(round));
        const auto first = measure(watch, each.name, each.launch(fresh), each.paintedFirst, log());
        fs::remove_all(fresh);
        IdleCost cost;
        const auto later =
            measure(watch, each.name, each.launch(kept(each)), each.paintedLater, log(), &cost);
        std::printf("  %-28s mapped %7.1f ms, painted %7.1f ms; new profile %7.1f and %7.1f ms\n",
                    each.name.c_str(), later.mapped, later.painted, first.mapped, first.painted);
        std::fflush(stdout);
        results.add("start to window mapped", "ms", each.name, later.mapped);
        results.add("start to page painted", "ms", each.name, later.painted);
        results.add("new profile: start to window mapped", "ms", each.name, first.mapped);
        results.add("new profile: start to page painted", "ms", each.name, first.painted);
        results.add("memory, all processes", "MiB", each.name, cost.treeMemory);
        results.add("memory, interface process", "MiB", each.name, cost.interfaceMemory);
        results.add("idle wake-ups, all processes", "/s", each.name, cost.treeWakeUps);
        results.add("idle wake-ups, interface process", "/s", each.name, cost.interfaceWakeUps);
    }

    Results results{"start", "Kelo"};
    const fs::path folder;
    const fs::path authority;
    const rig::DemoService service;
    const WindowWatch watch;
    std::vector<Candidate> all;
};

void compare(const fs::path& build, int rounds) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    Comparison comparison(build, folder.path());
    comparison.prepare();
    for (int round = 0; round < rounds; ++round)
        comparison.perform(round);
    comparison.publish(resultFolder(build));
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    try {
        const int rounds = count >= 3 ? std::stoi(arguments[2]) : 0;
        const bool phases = count == 4 && std::string_view(arguments[3]) == "--phases";
        if (rounds < 1 || (count == 4 && !phases) || count > 4) {
            std::cerr << "Usage: bench-start BUILD-FOLDER ROUNDS [--phases]\n";
            return 2;
        }
        const auto build = std::filesystem::absolute(arguments[1]);
        if (phases)
            kelo::bench::measurePhases(build, rounds);
        else
            kelo::bench::compare(build, rounds);
    } catch (const std::exception& error) {
        std::cerr << "bench-start: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
