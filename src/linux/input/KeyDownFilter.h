#pragma once

#include "linux/input/ToplevelWatch.h"
#include "platform/EventMonitors.h"

#include <functional>
#include <memory>

namespace kelo::input {

/// Sees each key that goes down in a window of ours before any widget of it does, and can take it.
/// Of a key that was taken, its release is taken, too, in whichever of our windows it comes, so
/// that no page or input method sees half a key press. GTK must be up. Main thread only.
class KeyDownFilter {
public:
    /// Returns whether the event goes on.
    using Handler = std::function<bool(const platform::EventPointer&)>;

    explicit KeyDownFilter(Handler handler);
    ~KeyDownFilter();
    KeyDownFilter(const KeyDownFilter&) = delete;
    KeyDownFilter& operator=(const KeyDownFilter&) = delete;

private:
    class Keys;
    /// Windows outlive the filter; once it has gone, this is empty and they are left alone.
    std::shared_ptr<std::unique_ptr<Keys>> keys;
    ToplevelWatch toplevels;
};

} // namespace kelo::input
