#pragma once

#include "platform/SceneGraph.h"

namespace kelo {

/// The menu of the menu bar extra: the way back to the main window, and to quit. The same at every
/// opening.
struct MenuBarContent {
    platform::Menu body() const;
};

} // namespace kelo
