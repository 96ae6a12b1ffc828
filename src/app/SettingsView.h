#pragma once

#include "platform/SceneGraph.h"

#include <string>

namespace kelo::app {

/// The read-only settings pane: the version and the service's host.
struct SettingsView {
    platform::SettingsDescription body() const;

private:
    /// "1.4.2 (57)", with "?" for each value that the bundle does not contain.
    static std::string versionString();
};

} // namespace kelo::app
