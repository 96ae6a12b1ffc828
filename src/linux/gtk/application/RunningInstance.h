#pragma once

#include <string>
#include <vector>

namespace kelo::gtk {

/// Asks the program that runs already for this user for its actions, by name. False when none runs,
/// or there is no session bus. Needs no display, so that a key that a desktop gives to an action is
/// answered without the toolkit's start.
bool askRunningInstance(const std::vector<std::string>& actions);

} // namespace kelo::gtk
