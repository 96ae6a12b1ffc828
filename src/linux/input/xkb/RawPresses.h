#pragma once

#include "linux/input/xkb/XkbModifierMap.h"

#include <optional>

struct _XDisplay;
union _XEvent;

namespace kelo::input {

/// The keys and mouse buttons that go down in any program, also while a program has grabbed the
/// keyboard. Grabs nothing itself, and repeated keys are not reported. The server sends nothing
/// unless listen(true) has been called. Main thread only.
class RawPresses {
public:
    /// Empty if the server has no XInput 2.1. display: must outlive the result.
    static std::optional<RawPresses> of(_XDisplay* display);

    /// Sends a request and does not wait.
    void listen(bool on) const;
    /// Whether the event says that a mouse button, or a key other than a modifier, went down.
    bool isOtherPress(_XEvent& event, const XkbModifierMap& map) const;

private:
    RawPresses(_XDisplay* display, int opcode) : display(display), opcode(opcode) {}

    _XDisplay* display;
    int opcode;
};

/// Whether a key other than a modifier is down. One round trip.
bool isOtherKeyDown(_XDisplay* display, const XkbModifierMap& map);

} // namespace kelo::input
