#pragma once

#include "platform/Geometry.h"

namespace kelo::platform {

/// A monitor, as it was at the moment of the request.
struct Screen {
    /// The work area: the part that the desktop's own panels and docks leave free.
    Rectangle visibleFrame;
};

} // namespace kelo::platform
