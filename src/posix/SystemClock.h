#pragma once

#include "base/Clock.h"

namespace kelo::posix {

/// The computer's clock.
class SystemClock final : public Clock {
public:
    std::chrono::system_clock::time_point now() const override {
        return std::chrono::system_clock::now();
    }
};

} // namespace kelo::posix
