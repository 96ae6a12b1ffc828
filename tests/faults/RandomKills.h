#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <random>
#include <stop_token>
#include <string>
#include <thread>

namespace kelo::faults {

/// Does something on a thread of its own when the time has passed, unless it is destroyed before.
class AfterAWhile {
public:
    AfterAWhile(std::chrono::microseconds time, std::function<void()> action);

private:
    std::mutex mutex;
    std::condition_variable_any never;
    std::jthread thread; ///< last: it uses the others, and is stopped first
};

/// The instants of a series of kills. KELO_FAULT_SEED repeats a series, and KELO_FAULT_KILLS says
/// how many there are of each kind.
class RandomInstants {
public:
    explicit RandomInstants(int usualCount);

    int count() const { return wanted; }
    /// Evenly from the road's beginning to its end.
    std::chrono::microseconds next(std::chrono::microseconds lengthOfRoad);
    std::uint64_t seed() const { return begin; }
    /// For a failure's trace: which kill of which series, and when.
    std::string describe(int number, std::chrono::microseconds instant) const;

private:
    std::uint64_t begin;
    int wanted;
    std::mt19937_64 numbers;
};

} // namespace kelo::faults
