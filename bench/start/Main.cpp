// bench-start: how long Kelo takes to show its window and its page, what it weighs then, and how
// often it wakes the processor when nothing happens, beside the browser that the web engine brings
// along, on the same page. The rounds are interleaved, so that what else the machine does meanwhile
// falls on all alike.

#include "common/Programs.h"
#include "start/Measurement.h"
#include "start/Statistics.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/rig/Screen.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <string>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

constexpr const char* page = "https://localhost:8443";

std::vector<Candidate> candidates(const fs::path& build, const fs::path& folder) {
    const std::vector<std::string> browser{miniBrowser(), "--ignore-tls-errors",
                                           "--geometry=1100x760", page};
    Candidate kelo{"Kelo", {build / "kelo"}, ownFolders(folder / "kelo"), {}};
    Candidate software{"MiniBrowser, cairo", browser, ownFolders(folder / "cairo"), {}};
    software.environment["GSK_RENDERER"] = "cairo";
    Candidate hardware{"MiniBrowser, OpenGL", browser, ownFolders(folder / "opengl"), {}};
    hardware.environment["GSK_RENDERER"] = "opengl";
    return {kelo, software, hardware};
}

void print(const std::vector<Candidate>& all, const std::vector<std::vector<Sample>>& samples) {
    std::printf("\n%-34s", "median (lowest to highest)");
    for (const auto& candidate : all)
        std::printf("%-30s", candidate.name.c_str());
    std::printf("Kelo to the better\n");
    for (std::size_t quantity = 0; quantity < quantityCount; ++quantity) {
        const auto& label = quantityLabels[quantity];
        std::printf("%-34s", label.name);
        std::vector<double> medians;
        for (const auto& ofCandidate : samples) {
            std::vector<double> values;
            for (const auto& sample : ofCandidate)
                values.push_back(sample[quantity]);
            const Summary summary = summarize(values);
            medians.push_back(summary.median);
            char cell[64];
            std::snprintf(cell, sizeof cell, "%.1f %s (%.1f to %.1f)", summary.median, label.unit,
                          summary.lowest, summary.highest);
            std::printf("%-30s", cell);
        }
        const double better = *std::min_element(medians.begin() + 1, medians.end());
        std::printf("%.2f\n", better > 0 ? medians.front() / better : 0.0);
    }
}

/// Without the rig's view of the accessibility tree: it would have the programs keep one.
void awaitWindowManager() {
    const rig::Screen screen;
    const auto deadline = WindowWatch::Clock::now() + std::chrono::seconds(30);
    while (!screen.windows.hasManager()) {
        if (WindowWatch::Clock::now() >= deadline)
            throw std::runtime_error("No window manager has started.");
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void run(const fs::path& build, int rounds) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    const WindowWatch watch;
    auto all = candidates(build, folder.path());
    for (auto& candidate : all)
        candidate.painted = findPaintedPixel(watch, candidate, folder.path() / "program.log");

    std::vector<std::vector<Sample>> samples(all.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t index = 0; index < all.size(); ++index) {
            // Every round begins with another candidate.
            const std::size_t turn = (index + static_cast<std::size_t>(round)) % all.size();
            samples[turn].push_back(measure(watch, all[turn], folder.path() / "program.log"));
            std::printf("round %d, %-20s mapped %7.1f ms, painted %7.1f ms\n", round + 1,
                        all[turn].name.c_str(), samples[turn].back()[0], samples[turn].back()[1]);
            std::fflush(stdout);
        }
    }
    print(all, samples);
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    try {
        const int rounds = count == 3 ? std::stoi(arguments[2]) : 0;
        if (rounds < 1) {
            std::cerr << "Usage: bench-start BUILD-FOLDER ROUNDS\n";
            return 2;
        }
        kelo::bench::run(std::filesystem::absolute(arguments[1]), rounds);
    } catch (const std::exception& error) {
        std::cerr << "bench-start: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
