#pragma once

#include "platform/SceneGraph.h"

namespace kelo::app {

/// The menu of the menu bar extra: the way back to the main window, and to quit. The same at every
/// opening.
struct MenuBarContent {
    platform::Menu body() const;
};

/// What the menu's item for it does: has the process's one updater look for a newer version.
void checkForUpdates();

} // namespace kelo::app
