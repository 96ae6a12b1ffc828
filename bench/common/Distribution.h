#pragma once

#include <cstddef>
#include <vector>

namespace kelo::bench {

/// Statistics of a list of times. The 95th percentile is the smallest value that at least 95 of 100
/// values do not exceed.
struct Distribution {
    std::size_t count = 0;
    double lowest = 0;
    double median = 0;
    double percentile95 = 0;
    double highest = 0;
};

/// Needs at least one value.
Distribution distributionOf(std::vector<double> values);

} // namespace kelo::bench
