#pragma once

#include <string>

typedef struct _GdkDisplay GdkDisplay;

namespace kelo::input {

enum class DisplayKind { none, x11, wayland };

/// Of the display that the toolkit is connected to.
DisplayKind displayKind(GdkDisplay* display);

/// Of the display that the toolkit would connect to, by its rules, without starting it. Connects
/// to what the environment names, to see whether it is there, and leaves again.
DisplayKind displayKindOfEnvironment();

} // namespace kelo::input
