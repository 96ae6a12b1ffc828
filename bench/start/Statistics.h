#pragma once

#include <vector>

namespace kelo::bench {

struct Summary {
    double median = 0;
    double lowest = 0;
    double highest = 0;
};

/// Needs at least one value.
Summary summarize(std::vector<double> values);

} // namespace kelo::bench
