#pragma once

#include "platform/SceneGraph.h"

namespace kelo::app {

/// The read-only settings pane: the version and the service's host.
struct SettingsView {
    platform::SettingsDescription body() const;
};

} // namespace kelo::app
