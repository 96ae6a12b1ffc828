#pragma once

#include "common/Growth.h"

#include <string>
#include <vector>

namespace kelo::bench {

/// What the cost of something was at several sizes, the smallest first.
struct GrowthSeries {
    std::string name;
    std::string sizes;               ///< what is counted: "records"
    std::vector<SizeAndCost> points; ///< costs in milliseconds
};

/// A line for each: the costs by size, the exponent, and a verdict on it.
std::string growthTable(const std::vector<GrowthSeries>& all);

std::string growthJson(const std::vector<GrowthSeries>& all, const std::vector<std::string>& notes);

/// Lines in a plane of logarithms as SVG. Every line begins at the lower left corner, at 1: across
/// is how many times the smallest size, up how many times its cost. Linear growth is the diagonal.
std::string growthPicture(const std::vector<GrowthSeries>& all);

} // namespace kelo::bench
