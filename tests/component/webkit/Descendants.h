#pragma once

#include <string>

namespace kelo::test {

/// Kills the processes of that name (as the kernel has it: 15 characters at most) that this process
/// started, directly or not. How many there were.
int killDescendants(const std::string& name);

} // namespace kelo::test
