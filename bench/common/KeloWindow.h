#pragma once

#include "common/WindowWatch.h"
#include "testing/screen/Windows.h"

#include <chrono>
#include <optional>
#include <sys/types.h>

namespace kelo::bench {

/// The main window of a running Kelo, seen and closed over a connection of its own. Every function
/// throws std::runtime_error if what it waits for does not come.
class KeloWindow {
public:
    using Clock = WindowWatch::Clock;

    /// The window must be on the screen, with the demo's login page in it.
    explicit KeloWindow(pid_t kelo);

    /// Closes it as the button in its frame does, and waits until it is gone.
    void close() const;
    /// Waits until the window is there again, and says when.
    Clock::time_point awaitMapped() const;
    /// Waits until the page is painted, and says when.
    Clock::time_point awaitPainted() const;
    /// Drops what has happened so far. Before what is to be timed.
    void forget() const { watch.reset(); }

    /// A pixel that the page's accent color fills.
    Pixel accented() const { return pixel; }
    screen::ScreenWindow described() const;

private:
    std::optional<screen::ScreenWindow> find() const;

    pid_t kelo;
    WindowWatch watch;
    screen::XConnection connection;
    screen::Windows windows{connection};
    Pixel pixel;
};

/// The demo page's button in the light scheme: nothing else that is on the screen has this color.
inline constexpr std::uint32_t accentColor = 0x2f5d50;
inline constexpr std::size_t leastAccentPixels = 200;

} // namespace kelo::bench
