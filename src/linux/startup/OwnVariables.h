#pragma once

#include <string>
#include <vector>

namespace kelo::startup {

/// Sets an environment variable for this process, unless the user has set it. Before the first
/// thread.
void setOwnVariable(const char* name, const char* value);

/// Names of the variables that setOwnVariable() has set and that are still so. They are meant for
/// this process alone: remove them from the environment of programs that are started for the user.
std::vector<std::string> ownVariables();

/// Keeps what the library of the security chip prints off this process's standard error, whatever
/// the environment asks for. What goes wrong is in our own log, with its cause; and when the
/// library is told to print more, it prints the keys of its sessions. Before the first thread.
void quietChipLibrary();

} // namespace kelo::startup
