#pragma once

#include "platform/Worker.h"

namespace kelo::test {

/// Runs each job inside the call.
struct ImmediateWorker final : platform::Worker {
    void perform(std::function<void()> job) override { job(); }
};

} // namespace kelo::test
