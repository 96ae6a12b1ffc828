#pragma once

#include "platform/SceneGraph.h"

namespace kelo {

/// The menu of the menu bar extra. Has no items yet.
struct MenuBarContent {
    platform::Menu body() const { return {}; }
};

} // namespace kelo
