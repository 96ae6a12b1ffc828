#include "start/Statistics.h"

#include <algorithm>

namespace kelo::bench {

Summary summarize(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    const double median =
        values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    return {median, values.front(), values.back()};
}

} // namespace kelo::bench
