#pragma once

#include "testing/screen/WindowEvents.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace kelo::bench {

struct Pixel {
    int x = 0;
    int y = 0;
};

/// Observes the screen over a separate connection to the X server, independently of the program.
class WindowWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// Drops events that have not been read.
    void reset() const;
    /// When a window as large as a program's appeared; empty if none did before the deadline.
    std::optional<Clock::time_point> awaitMapped(Clock::time_point deadline) const;
    /// When the pixel took the color (0xRRGGBB).
    std::optional<Clock::time_point> awaitColor(Pixel pixel, std::uint32_t color,
                                                Clock::time_point deadline) const;
    /// The middle pixel of all that have the color; nothing before there are at least `least`.
    std::optional<Pixel> awaitArea(std::uint32_t color, std::size_t least,
                                   Clock::time_point deadline) const;

private:
    const screen::WindowEvents events;
};

} // namespace kelo::bench
