#pragma once

#include <string>
#include <vector>

namespace kelo::gtk {

/// Runs actions, by name, in the process of the program that is already running for this user.
/// False if there is none, or no session bus. Needs no display, so that an action on a desktop's
/// shortcut key does not wait for the toolkit to start.
bool askRunningInstance(const std::vector<std::string>& actions);

} // namespace kelo::gtk
