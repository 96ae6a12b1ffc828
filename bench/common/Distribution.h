#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace kelo::bench {

/// Statistics of a list of values. The 95th percentile is the smallest value that at least 95 of
/// 100 values do not exceed.
struct Distribution {
    std::size_t count = 0;
    double lowest = 0;
    double median = 0;
    double percentile95 = 0;
    double highest = 0;
};

/// Needs at least one value.
Distribution distributionOf(std::vector<double> values);

/// Of the quotients of values that were taken in the same round, round by round: what the machine
/// does besides falls on both, and so the quotients spread less than the values do. Nothing if the
/// lists differ in length, are empty, or a divisor is 0.
std::optional<Distribution> ratioOf(const std::vector<double>& values,
                                    const std::vector<double>& divisors);

} // namespace kelo::bench
