// bench-scale: how the cost of what can become large grows with it. Nothing may grow faster than
// its size.

#include "common/BenchmarkMain.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "scale/Works.h"
#include "testing/TemporaryFolder.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

namespace kelo::bench {

namespace {

void run(const std::filesystem::path& build) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    std::vector<GrowthSeries> all;
    const auto take = [&](const std::vector<GrowthSeries>& measured) {
        std::fputs(growthTable(measured).c_str(), stdout);
        std::fflush(stdout);
        std::ranges::copy(measured, std::back_inserter(all));
    };
    take(passkeyGrowth(folder.path()));
    take(feedGrowth());
    take(archiveGrowth());
    take(hotkeyGrowth());
    take(monitorGrowth(folder.path()));
    take(pressGrowth(build, folder.path() / "presses"));
    take(pageGrowth(build, folder.path()));
    const std::vector<std::string> notes{
        "size^e is fitted to all five sizes. What every run costs, whatever the size, makes e "
        "smaller. More than 1.15 is worse than linear.",
        "Archives are unpacked in memory, with a higher limit than updates have: those may hold "
        "20,000 entries."};
    for (const auto& note : notes)
        std::printf("\n%s", note.c_str());
    const auto target = resultFolder(build);
    writeText(target / "scale.json", growthJson(all, notes));
    writeText(target / "scale.svg", growthPicture(all));
    std::printf("\n\nWritten: %s and .svg\n", (target / "scale.json").c_str());
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-scale", nullptr,
        [](const kelo::bench::Order& order) { kelo::bench::run(order.build); });
}
