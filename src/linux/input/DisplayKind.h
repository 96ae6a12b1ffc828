#pragma once

#include <string>

typedef struct _GdkDisplay GdkDisplay;

namespace kelo::input {

enum class DisplayKind { none, x11, wayland };

/// The kind of the display that the toolkit is connected to; none for null.
DisplayKind displayKind(GdkDisplay* display);

/// The kind of the display that the toolkit would choose. Does not start the toolkit: it opens the
/// connections that the environment names and closes them again.
DisplayKind displayKindOfEnvironment();

} // namespace kelo::input
