#include "common/Growth.h"

#include <cmath>

namespace kelo::bench {

double growthExponent(std::span<const SizeAndCost> points) {
    const auto count = static_cast<double>(points.size());
    double meanX = 0;
    double meanY = 0;
    for (const auto& [size, cost] : points) {
        meanX += std::log(size) / count;
        meanY += std::log(cost) / count;
    }
    double covariance = 0;
    double variance = 0;
    for (const auto& [size, cost] : points) {
        const double x = std::log(size) - meanX;
        covariance += x * (std::log(cost) - meanY);
        variance += x * x;
    }
    return covariance / variance;
}

} // namespace kelo::bench
