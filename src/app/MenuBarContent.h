#pragma once

#include "platform/SceneGraph.h"

namespace kelo::app {

/// The menu of the menu bar extra. It never changes.
struct MenuBarContent {
    platform::Menu body() const;
};

/// Starts a check for a newer version, as the menu's item does. Creates the process's updater on
/// the first call.
void checkForUpdates();

} // namespace kelo::app
