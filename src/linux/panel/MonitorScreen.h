#pragma once

#include "platform/Geometry.h"

#include <gdk/gdk.h>

#include <optional>

namespace kelo::panel {

/// The toolkit's first monitor; empty if there is none. y grows upward from the lower edge of the
/// lowest monitor. Wayland tells a program neither which monitor is in use nor its work area, so
/// this takes the place of both.
std::optional<platform::Rectangle> firstMonitor(GdkDisplay* display);

} // namespace kelo::panel
