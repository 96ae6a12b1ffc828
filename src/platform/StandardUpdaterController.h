#pragma once

namespace kelo::platform {

/// The updater with its own windows, as one object that is started when it is made. From then on it
/// makes the automatic checks that the bundle's settings ask for. Main thread only.
class StandardUpdaterController {
public:
    virtual ~StandardUpdaterController() = default;
    /// The user asks: shows what comes of it in windows of its own, failures included. While a
    /// check is under way, its window comes to the front instead.
    virtual void checkForUpdates() = 0;
};

} // namespace kelo::platform
