#pragma once

#include "common/GrowthChart.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <vector>

namespace kelo::bench {

// What grows with its owner's years or by somebody's mistake, at five sizes each. All block, and
// throw std::runtime_error when something fails.

/// Passkeys in the store, up to 500: what is asked of it in a ceremony, and in the list.
std::vector<GrowthSeries> passkeyGrowth(const std::filesystem::path& folder);

/// Items of a feed, up to 10,000: reading it, and choosing among them.
std::vector<GrowthSeries> feedGrowth();

/// Files of an update, up to 50,000: unpacking it, in memory.
std::vector<GrowthSeries> archiveGrowth();

/// Changes of modifier keys, up to 200 seconds with 200 of them each.
std::vector<GrowthSeries> hotkeyGrowth();

/// The same in the program as it runs, up to 800 changes a second: what it takes of the processor.
std::vector<GrowthSeries> pressGrowth(const std::filesystem::path& build,
                                      const std::filesystem::path& folder);

/// Monitors, up to 16: finding the place for the panel. Needs the X server for itself.
std::vector<GrowthSeries> monitorGrowth(const std::filesystem::path& folder);

/// Messages of a page, up to 50,000: loading it, and what it takes of the interface process. Starts
/// the demo service and Kelo.
std::vector<GrowthSeries> pageGrowth(const std::filesystem::path& build,
                                     const std::filesystem::path& folder);

/// Milliseconds that the work takes: the median of as many repetitions as fit into half a second,
/// three at the least.
double costOf(const std::function<void()>& work);

} // namespace kelo::bench
