#pragma once

#include "platform/StandardUpdaterController.h"

#include <memory>

namespace kelo::app {

/// The process's one updater. It is made, and thereby started, at the first update check. A user
/// who never checks has no automatic checks either.
class UpdaterController {
public:
    /// Made at the first call, which is safe for threads that race for it; never destroyed.
    static UpdaterController& shared();

    UpdaterController(const UpdaterController&) = delete;
    UpdaterController& operator=(const UpdaterController&) = delete;

    const std::unique_ptr<platform::StandardUpdaterController> controller;

private:
    UpdaterController();
};

} // namespace kelo::app
