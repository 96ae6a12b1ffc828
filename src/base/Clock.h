#pragma once

#include <chrono>

namespace kelo {

class Clock {
public:
    virtual ~Clock() = default;
    virtual std::chrono::system_clock::time_point now() const = 0;
};

} // namespace kelo
