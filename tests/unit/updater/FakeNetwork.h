#pragma once

#include "updater/archive/Network.h"

namespace kelo::test {

struct FakeNetwork final : updater::Network {
    bool isMetered() const override { return metered; }
    void whenAvailable(std::function<void()> changed) override { action = std::move(changed); }
    void come() const {
        if (action)
            action();
    }

    bool metered = false;
    std::function<void()> action;
};

} // namespace kelo::test
