#pragma once

#include "platform/StandardUpdaterController.h"

#include <memory>

namespace kelo::app {

/// The process's one updater. It is made, and thereby started, at the first update check and not
/// before: who never checks has no automatic checks either.
class UpdaterController {
public:
    /// Lives until the process ends. Two threads that race for it get the same.
    static UpdaterController& shared();

    UpdaterController(const UpdaterController&) = delete;
    UpdaterController& operator=(const UpdaterController&) = delete;

    const std::unique_ptr<platform::StandardUpdaterController> controller;

private:
    UpdaterController();
};

} // namespace kelo::app
