#pragma once

namespace kelo::platform {

/// The updater with windows of its own. It is started when it is made, and from then on runs the
/// automatic checks that the bundle's settings ask for. Main thread only.
class StandardUpdaterController {
public:
    virtual ~StandardUpdaterController() = default;
    /// Checks for updates and shows the outcome, failures included. If a check is running already,
    /// its window comes to the front instead.
    virtual void checkForUpdates() = 0;
};

} // namespace kelo::platform
