#include "common/Distribution.h"

#include <algorithm>

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

} // namespace kelo::bench
