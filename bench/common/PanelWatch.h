#pragma once

#include "testing/screen/WindowEvents.h"
#include "testing/screen/Windows.h"

#include <chrono>
#include <optional>

namespace kelo::bench {

/// Sees a window come and go that no window manager manages, such as the voice panel or a launcher,
/// over a connection of its own. It is recognized by its least size; once seen, only it counts.
class PanelWatch {
public:
    using Clock = screen::WindowEvents::Clock;

    PanelWatch(int leastWidth, int leastHeight)
        : leastWidth(leastWidth), leastHeight(leastHeight) {}

    void forget() const { events.forget(); }
    /// The next time that it appears or disappears. Throws std::runtime_error if it does not.
    Clock::time_point awaitShown();
    Clock::time_point awaitHidden();
    /// Another window may be the next.
    void expectAnother() { window.reset(); }

private:
    Clock::time_point awaitEvent(screen::WindowEvent::Kind kind);

    int leastWidth;
    int leastHeight;
    screen::WindowEvents events;
    screen::Windows windows{events.connection()};
    std::optional<screen::WindowId> window;
};

} // namespace kelo::bench
