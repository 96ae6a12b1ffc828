#pragma once

#include "linux/input/DisplayKind.h"
#include "linux/input/source/ModifierSource.h"

#include <string>

namespace kelo::input {

/// The sources that see the modifiers in every program on this kind of display, best first.
/// displayName: the X11 display; if empty, the one that the environment names.
SourceList sourcesForEveryProgram(DisplayKind kind, const std::string& displayName = {});

} // namespace kelo::input
