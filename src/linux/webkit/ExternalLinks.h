#pragma once

#include <functional>
#include <string>

namespace kelo::webkit {

/// Hands an address to the program the user has for it.
using ExternalOpener = std::function<void(const std::string& address)>;

/// Through the desktop's default applications; a failure goes to the journal.
void openWithDefaultProgram(const std::string& address);

} // namespace kelo::webkit
