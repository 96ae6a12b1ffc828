#pragma once

#include "platform/Geometry.h"

#include <gdk/gdk.h>

#include <optional>

namespace kelo::panel {

/// The first monitor that the toolkit knows of, y counted upward from the lower edge of the lowest
/// one; nothing when there is none. What a program learns on a compositor that tells neither which
/// monitor is in use nor what its own panels leave free.
std::optional<platform::Rectangle> firstMonitor(GdkDisplay* display);

} // namespace kelo::panel
