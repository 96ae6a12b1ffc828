#include "common/Distribution.h"

#include <algorithm>
#include <utility>

namespace kelo::bench {

Distribution distributionOf(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t count = values.size();
    const std::size_t middle = count / 2;
    const double median =
        count % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    const std::size_t rank95 = (95 * count + 99) / 100;
    return {count, values.front(), median, values[rank95 - 1], values.back()};
}

std::optional<Distribution> ratioOf(const std::vector<double>& values,
                                    const std::vector<double>& divisors) {
    if (values.empty() || values.size() != divisors.size() || std::ranges::count(divisors, 0.0) > 0)
        return std::nullopt;
    std::vector<double> ratios;
    for (std::size_t round = 0; round < values.size(); ++round)
        ratios.push_back(values[round] / divisors[round]);
    return distributionOf(std::move(ratios));
}

} // namespace kelo::bench
