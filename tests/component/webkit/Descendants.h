#pragma once

#include <set>
#include <string>
#include <sys/types.h>

namespace kelo::test {

/// The descendants of this process with that name (in the kernel: at most 15 characters).
std::set<pid_t> descendants(const std::string& name);

/// Kills all of those of the engine that have begun their work. Returns how many there were.
int killDescendants(const std::string& name);

} // namespace kelo::test
