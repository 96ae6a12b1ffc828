#pragma once

#include <filesystem>

namespace kelo::bench {

/// How long each phase of Kelo's start takes, from cold (nothing of it in the kernel's memory, no
/// profile) and warm, in turns. Prints and writes the results. Throws std::runtime_error when a
/// start fails.
void measurePhases(const std::filesystem::path& build, int rounds);

} // namespace kelo::bench
