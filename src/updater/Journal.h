#pragma once

#include <functional>
#include <string>

namespace kelo::updater {

/// Takes a line for those who look after the program. May be called from any thread.
using Journal = std::function<void(const std::string& line)>;

} // namespace kelo::updater
