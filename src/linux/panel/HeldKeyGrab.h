#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "linux/panel/X11Connection.h"

#include <optional>

namespace kelo::panel {

/// Keeps a key that hides the panel from the program behind it. That program gets the keyboard at
/// once, and would see the repetitions of the key while it is still held. Main thread only.
class HeldKeyGrab {
public:
    explicit HeldKeyGrab(X11Connection connection) : connection(connection) {}
    ~HeldKeyGrab();
    HeldKeyGrab(const HeldKeyGrab&) = delete;
    HeldKeyGrab& operator=(const HeldKeyGrab&) = delete;

    /// If Escape is down, swallows all keys until it is released, but for two seconds at most. Does
    /// nothing if another program has grabbed the keyboard.
    void begin();
    /// To be called with each event of the display.
    void handle(const XEvent& event);

private:
    struct Held {
        int key;
        int device;
    };

    void end();

    X11Connection connection;
    std::optional<Held> held;
    gobject::ScheduledJob limit;
};

} // namespace kelo::panel
