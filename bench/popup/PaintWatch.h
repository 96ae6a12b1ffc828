#pragma once

#include "testing/screen/Pointer.h"
#include "testing/screen/XConnection.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace kelo::bench {

/// Tells when a pixel of the screen gets another color. The server reports every area that is drawn
/// (DAMAGE) on a connection of its own, so nothing is asked, and nobody is slowed down, in between;
/// a report that covers the pixel is checked by reading it. The time is that of the report's
/// arrival.
class PaintWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// Throws std::runtime_error when the server has no DAMAGE.
    PaintWatch();
    ~PaintWatch();
    PaintWatch(const PaintWatch&) = delete;
    PaintWatch& operator=(const PaintWatch&) = delete;

    std::uint32_t color(screen::Point pixel) const;
    /// Forgets what was drawn so far.
    void forget() const;
    /// When the pixel was first drawn, since the last forget(), with another color than `before`;
    /// nothing when it was not before the deadline.
    std::optional<Clock::time_point> awaitChange(screen::Point pixel, std::uint32_t before,
                                                 Clock::time_point deadline) const;
    /// Returns when nothing has been drawn for that long, or at the deadline.
    void awaitQuiet(Clock::duration quiet, Clock::time_point deadline) const;

private:
    struct Report;
    std::optional<Report> next(Clock::time_point deadline) const;

    screen::XConnection own;
    int firstEvent = 0;
    unsigned long damage = 0;
};

} // namespace kelo::bench
