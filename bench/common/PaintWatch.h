#pragma once

#include "testing/screen/Pointer.h"
#include "testing/screen/XConnection.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace kelo::bench {

/// Reports when a pixel of the screen changes its color. The server announces every area that is
/// drawn (DAMAGE) on a separate connection, so that nothing polls it. If an announced area covers
/// the pixel, the pixel is read. The time is the arrival of the announcement.
class PaintWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// Throws std::runtime_error if the server lacks DAMAGE.
    PaintWatch();
    ~PaintWatch();
    PaintWatch(const PaintWatch&) = delete;
    PaintWatch& operator=(const PaintWatch&) = delete;

    std::uint32_t color(screen::Point pixel) const;
    /// Drops all announcements so far.
    void forget() const;
    /// When the pixel was first drawn, since the last forget(), with another color than `before`;
    /// empty if that did not happen before the deadline.
    std::optional<Clock::time_point> awaitChange(screen::Point pixel, std::uint32_t before,
                                                 Clock::time_point deadline) const;
    /// Waits until nothing has been drawn for that long, or until the deadline.
    void awaitQuiet(Clock::duration quiet, Clock::time_point deadline) const;

private:
    struct Report;
    std::optional<Report> next(Clock::time_point deadline) const;

    screen::XConnection own;
    int firstEvent = 0;
    unsigned long damage = 0;
};

} // namespace kelo::bench
