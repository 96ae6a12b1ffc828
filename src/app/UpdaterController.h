#pragma once

namespace kelo {

/// The process's one updater, made on the first update check and not before.
class UpdaterController {
public:
    static UpdaterController& shared();

    UpdaterController(const UpdaterController&) = delete;
    UpdaterController& operator=(const UpdaterController&) = delete;

private:
    UpdaterController() = default;
};

} // namespace kelo
