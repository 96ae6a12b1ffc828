#pragma once

#include <cstddef>
#include <vector>

namespace kelo::bench {

/// What is printed of a list of times: the 95th percentile is the smallest value that at least 95
/// of 100 do not exceed.
struct Distribution {
    std::size_t count = 0;
    double lowest = 0;
    double median = 0;
    double percentile95 = 0;
    double highest = 0;
};

/// Of at least one value.
Distribution distributionOf(std::vector<double> values);

} // namespace kelo::bench
