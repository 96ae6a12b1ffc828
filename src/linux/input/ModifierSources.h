#pragma once

#include "linux/input/source/ModifierSource.h"

#include <string>

typedef struct _GdkDisplay GdkDisplay;

namespace kelo::input {

/// Whose keys a program on a display can see. wayland: also for an X11 program on a Wayland
/// desktop.
enum class DisplayKind { none, x11, wayland };

/// The kind of the display that the toolkit is connected to; none for null. Asks the server.
DisplayKind displayKind(GdkDisplay* display);

/// The kind of the display that the toolkit would choose. Does not start the toolkit: it opens the
/// connections that the environment names and closes them again.
DisplayKind displayKindOfEnvironment();

/// The sources that see the modifiers in every program on this kind of display, best first.
/// displayName: the X11 display; if empty, the one that the environment names.
SourceList sourcesForEveryProgram(DisplayKind kind, const std::string& displayName = {});

} // namespace kelo::input
