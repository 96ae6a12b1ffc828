#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

struct _XDisplay;

namespace kelo::bench {

struct Pixel {
    int x = 0;
    int y = 0;
};

/// The screen as somebody sees it who waits for a program: through a connection of its own to the X
/// server, and so without a word from the program.
class WindowWatch {
public:
    WindowWatch();
    ~WindowWatch();
    WindowWatch(const WindowWatch&) = delete;
    WindowWatch& operator=(const WindowWatch&) = delete;

    using Clock = std::chrono::steady_clock;

    /// Forgets events that are still on their way.
    void reset() const;
    /// When a window of a program's size came onto the screen; nothing before the deadline.
    std::optional<Clock::time_point> awaitMapped(Clock::time_point deadline) const;
    /// When the pixel took the colour (0xRRGGBB).
    std::optional<Clock::time_point> awaitColour(Pixel pixel, std::uint32_t colour,
                                                 Clock::time_point deadline) const;
    /// The middle pixel of all that have the colour; nothing before there are at least `least`.
    std::optional<Pixel> awaitArea(std::uint32_t colour, std::size_t least,
                                   Clock::time_point deadline) const;

private:
    struct Closer {
        void operator()(_XDisplay* display) const;
    };
    std::unique_ptr<_XDisplay, Closer> display;
};

} // namespace kelo::bench
