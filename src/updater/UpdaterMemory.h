#pragma once

#include "base/async/Task.h"
#include "updater/UpdaterParts.h"

#include <chrono>
#include <memory>
#include <string>

namespace kelo::updater {

/// What one check hands on to the next.
class UpdaterMemory {
public:
    explicit UpdaterMemory(UpdaterParts parts);

    /// Made at the first call.
    UserDriver& userDriver();
    bool hasUserDriver() const { return driver != nullptr; }
    std::chrono::sys_seconds now() const;
    /// Keeps the state for the next start.
    Task<void> save();

    UpdaterParts parts;
    UpdaterState state;
    /// The version that is staged and only waits to be started; empty for none.
    std::string preparedVersion;

private:
    std::unique_ptr<UserDriver> driver;
};

} // namespace kelo::updater
