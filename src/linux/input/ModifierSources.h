#pragma once

#include "linux/input/DisplayKind.h"
#include "linux/input/source/ModifierSource.h"

#include <memory>
#include <string>
#include <vector>

namespace kelo::input {

using SourceList = std::vector<std::unique_ptr<ModifierSource>>;

/// What can tell of the modifiers in every program on such a display, the best first. The display's
/// name is for X11; empty for the one of the environment.
SourceList sourcesForEveryProgram(DisplayKind kind, const std::string& displayName = {});

} // namespace kelo::input
