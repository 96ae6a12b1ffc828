#pragma once

#include "testing/screen/XConnection.h"

#include <chrono>
#include <functional>
#include <optional>

namespace kelo::screen {

/// Something that happened to a window that lies on the root.
struct WindowEvent {
    enum class Kind { created, mapped, unmapped, destroyed };
    Kind kind = Kind::created;
    WindowId window = 0;
    /// When this process learned of it.
    std::chrono::steady_clock::time_point time;
};

/// Tells when windows come onto the screen and leave it, by a connection of its own. From its
/// making on no event is lost.
class WindowEvents {
public:
    using Clock = std::chrono::steady_clock;

    WindowEvents();

    /// Forgets events that were not asked for yet, also those still on their way.
    void forget() const;
    /// The next one; nothing when there is none before the deadline.
    std::optional<WindowEvent> next(Clock::time_point deadline) const;
    /// The next one for which the condition holds; those before it are forgotten.
    std::optional<WindowEvent> await(const std::function<bool(const WindowEvent&)>& condition,
                                     Clock::time_point deadline) const;

    const XConnection& connection() const { return own; }

private:
    std::optional<WindowEvent> pending() const;

    XConnection own;
};

} // namespace kelo::screen
