#pragma once

#include "linux/input/source/MainLoopSource.h"

#include <functional>

namespace kelo::input {

/// Calls a function from the main loop whenever a descriptor is readable, at its end or in error.
/// The destructor ends the watch, and the function may call it. The descriptor stays the caller's.
/// Main thread only.
class DescriptorWatch {
public:
    DescriptorWatch(int descriptor, std::function<void()> ready);

private:
    MainLoopSource source;
};

} // namespace kelo::input
