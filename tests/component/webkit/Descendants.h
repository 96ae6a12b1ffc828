#pragma once

#include <string>

namespace kelo::test {

/// Kills all descendants of this process with that name (in the kernel: at most 15 characters).
/// Returns how many there were.
int killDescendants(const std::string& name);

} // namespace kelo::test
