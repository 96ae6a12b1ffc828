#pragma once

#include "testing/screen/XConnection.h"

#include <chrono>
#include <functional>
#include <optional>

namespace kelo::screen {

/// A child of the root window was shown or hidden.
struct WindowEvent {
    enum class Kind { created, mapped, unmapped, destroyed };
    Kind kind = Kind::created;
    WindowId window = 0;
    /// When this process learned of it.
    std::chrono::steady_clock::time_point time;
};

/// Reports when windows appear and disappear, over an X connection of its own. Loses no event from
/// its construction on.
class WindowEvents {
public:
    using Clock = std::chrono::steady_clock;

    WindowEvents();

    /// Drops all events so far, including those that the server has sent but nobody has read.
    void forget() const;
    /// The next event; empty if there is none before the deadline.
    std::optional<WindowEvent> next(Clock::time_point deadline) const;
    /// The next event for which the condition holds; drops those before it.
    std::optional<WindowEvent> await(const std::function<bool(const WindowEvent&)>& condition,
                                     Clock::time_point deadline) const;

    const XConnection& connection() const { return own; }

private:
    std::optional<WindowEvent> pending() const;

    XConnection own;
};

} // namespace kelo::screen
