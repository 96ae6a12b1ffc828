#pragma once

#include "linux/window/Toplevels.h"
#include "platform/EventMonitors.h"

#include <functional>
#include <memory>

namespace kelo::input {

/// Sees each key press in a window of ours before the window's widgets do, and can consume it. If a
/// press is consumed, so is its release, in whichever of our windows it arrives: no page or input
/// method sees half a key press. Also tells of mouse buttons, which it never consumes. GTK must be
/// initialized. Main thread only.
class KeyDownFilter {
public:
    /// Returns false to consume the event.
    using Handler = std::function<bool(const platform::EventPointer&)>;

    /// otherPress: called when a key other than a modifier, or a mouse button, goes down, before
    /// the handler. Not called when a key repeats. May be empty.
    explicit KeyDownFilter(Handler handler, std::function<void()> otherPress = {});
    ~KeyDownFilter();
    KeyDownFilter(const KeyDownFilter&) = delete;
    KeyDownFilter& operator=(const KeyDownFilter&) = delete;

private:
    class Keys;
    /// Shared with the windows, which outlive the filter.
    std::shared_ptr<Keys> keys;
    window::ToplevelWatch toplevels;
};

} // namespace kelo::input
