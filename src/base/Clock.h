#pragma once

#include <chrono>
#include <functional>

namespace kelo {

class Clock {
public:
    virtual ~Clock() = default;
    virtual std::chrono::system_clock::time_point now() const = 0;
};

/// Tells a time that nobody sets back, to measure by how long something lasts.
using SteadyNow = std::function<std::chrono::steady_clock::time_point()>;

} // namespace kelo
