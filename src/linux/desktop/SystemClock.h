#pragma once

#include "platform/Clock.h"

namespace kelo::desktop {

class SystemClock final : public platform::Clock {
public:
    std::chrono::system_clock::time_point now() const override {
        return std::chrono::system_clock::now();
    }
};

} // namespace kelo::desktop
