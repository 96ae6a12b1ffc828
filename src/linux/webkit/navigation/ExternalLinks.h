#pragma once

#include <functional>
#include <string>

namespace kelo::webkit {

/// Opens an address in the user's program for it.
using ExternalOpener = std::function<void(const std::string& address)>;

/// Opens it with the desktop's default application. Does not wait; a failure is logged.
void openWithDefaultProgram(const std::string& address);

} // namespace kelo::webkit
