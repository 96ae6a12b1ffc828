#pragma once

#include "base/async/Worker.h"

namespace kelo::test {

/// Runs each job inside perform().
struct ImmediateWorker final : Worker {
    void perform(std::function<void()> job) override { job(); }
};

} // namespace kelo::test
