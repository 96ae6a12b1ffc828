#pragma once

#include "platform/Geometry.h"

namespace kelo::platform {

/// A monitor, as it was when it was asked for.
struct Screen {
    /// What the desktop's own panels and docks leave free.
    Rectangle visibleFrame;
};

} // namespace kelo::platform
