#include "common/Distribution.h"
#include "common/Frames.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "common/RunningKelo.h"
#include "common/Wakings.h"
#include "scale/Works.h"
#include "testing/rig/DemoService.h"

#include <array>
#include <stdexcept>
#include <string>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

using Clock = std::chrono::steady_clock;

constexpr std::array<std::size_t, 5> sizes{3125, 6250, 12500, 25000, 50000};
constexpr std::chrono::seconds patience{120};
constexpr std::chrono::milliseconds lookEvery{5};
constexpr std::chrono::seconds afterwards{2};

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

std::string pageName(std::size_t messages) {
    return "messages-" + std::to_string(messages) + ".html";
}

void writePage(const fs::path& folder, std::size_t messages) {
    std::string page = "<!doctype html><meta charset=\"utf-8\"><title>Messages</title><main>\n";
    for (std::size_t message = 0; message < messages; ++message)
        page += "<article><h2>Message " + std::to_string(message) +
                "</h2><p>What was asked, and what was answered to it.</p></article>\n";
    writeText(folder / pageName(messages), page + "</main>\n");
}

/// Opens pages in a Kelo that runs, one after the other.
class Reader {
public:
    Reader(const fs::path& build, const fs::path& folder)
        : build(build),
          folder(folder),
          service(build, build / "demo-authority", folder / "service.log", {},
                  {"--gallery", folder / "pages"}),
          moments(folder / "moments"),
          kelo(build, folder, {}, moments.variables()) {}

    struct Cost {
        double loaded = 0;    ///< from the command to the end of the load
        double processor = 0; ///< of the interface process, with the seconds that follow
        double frame = 0;     ///< the longest of ours
    };

    Cost open(std::size_t messages) const {
        const auto before = wakingsOf({kelo.identifier()});
        const auto begun = Clock::now();
        rig::ChildProcess command(
            {build / "kelo", "https://localhost:8443/gallery/" + pageName(messages)},
            ownFolders(folder / "kelo"), folder / "command.log");
        const auto loaded = awaitLoad(begun);
        std::this_thread::sleep_for(afterwards);
        const auto spent =
            wakingsBetween(before, wakingsOf({kelo.identifier()})).at(kelo.identifier()).sum();
        constexpr double perMillisecond = 1e6;
        return {milliseconds(loaded - begun),
                static_cast<double>(spent.nanoseconds) / perMillisecond,
                milliseconds(framesSince(moments.read(), begun).longest)};
    }

private:
    Clock::time_point awaitLoad(Clock::time_point begun) const {
        while (Clock::now() < begun + patience) {
            if (const auto loaded = firstMoment(moments.read(), "loadFinished", begun))
                return *loaded;
            std::this_thread::sleep_for(lookEvery);
        }
        throw std::runtime_error("A page with many messages was not loaded.");
    }

    const fs::path build;
    const fs::path folder;
    const rig::DemoService service;
    const MomentFile moments;
    const RunningKelo kelo;
};

} // namespace

std::vector<GrowthSeries> pageGrowth(const fs::path& build, const fs::path& folder) {
    for (const std::size_t size : sizes)
        writePage(folder / "pages", size);
    GrowthSeries loading{"page: from the command to loaded", "messages", {}};
    GrowthSeries processor{"page: processor time of the interface process", "messages", {}};
    GrowthSeries frame{"page: longest frame of the interface process", "messages", {}};
    const Reader reader(build, folder);
    reader.open(sizes.front());
    for (const std::size_t size : sizes) {
        constexpr int repetitions = 3;
        std::vector<double> loaded, spent, longest;
        for (int repetition = 0; repetition < repetitions; ++repetition) {
            const auto cost = reader.open(size);
            loaded.push_back(cost.loaded);
            spent.push_back(cost.processor);
            longest.push_back(cost.frame);
        }
        const auto messages = static_cast<double>(size);
        loading.points.push_back({messages, distributionOf(loaded).median});
        processor.points.push_back({messages, distributionOf(spent).median});
        frame.points.push_back({messages, distributionOf(longest).median});
    }
    return {loading, processor, frame};
}

} // namespace kelo::bench
