#pragma once

#include <span>

namespace kelo::bench {

/// How much of something there was, and what it cost.
struct SizeAndCost {
    double size = 0;
    double cost = 0;
};

/// The e of cost = constant × size^e that fits best (least squares of the logarithms): 1 is linear,
/// 2 quadratic. What every run costs, whatever the size, makes it smaller, so the sizes have to
/// reach far beyond that. Needs two different sizes at least, all values above 0.
double growthExponent(std::span<const SizeAndCost> points);

/// Above this, cost counts as growing faster than size: measured times of a linear algorithm fit
/// exponents of up to this, by caches that no longer hold everything.
inline constexpr double linearLimit = 1.15;

} // namespace kelo::bench
