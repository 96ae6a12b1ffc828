#pragma once

#include "common/MomentFile.h"

#include <chrono>
#include <span>

namespace kelo::bench {

/// A frame that takes longer misses the next one of a screen with 60 a second.
inline constexpr std::chrono::milliseconds frameLimit{16};

/// What a program's frames took of its main thread.
struct Frames {
    std::size_t count = 0;
    std::size_t janky = 0; ///< longer than the limit
    std::chrono::steady_clock::duration longest{};
};

/// Of those that began at the time or later. A frame whose end is missing does not count.
Frames framesSince(std::span<const MomentLine> lines, std::chrono::steady_clock::time_point begin);

} // namespace kelo::bench
