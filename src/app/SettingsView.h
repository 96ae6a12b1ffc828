#pragma once

#include "platform/SceneGraph.h"

namespace kelo {

/// The settings pane. Has no rows yet.
struct SettingsView {
    platform::SettingsDescription body() const { return {{}, {360, 140}}; }
};

} // namespace kelo
