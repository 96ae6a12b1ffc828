#pragma once

#include "linux/input/source/KeyboardFocus.h"
#include "platform/EventMonitors.h"

#include <functional>

namespace kelo::input {

/// Makes one account of the modifiers out of what two sources tell, and says of each change whose
/// it is. While a window of ours has the keyboard, the source of our own windows counts, if there
/// is one; otherwise the other does. What both see is told once. Main thread only.
class ModifierDispatch {
public:
    /// Gets what is down after a change, and whether one of our windows has the keyboard.
    using Receiver = std::function<void(platform::ModifierFlags, bool ours)>;

    /// The focus is the caller's and outlives this.
    ModifierDispatch(const KeyboardFocus& focus, bool hasOwnWindowsSource, Receiver receiver);

    void sawEverywhere(platform::ModifierFlags flags);
    void sawInOwnWindows(platform::ModifierFlags flags);
    /// The focus may have changed. Needed only where there is a source of our own windows.
    void focusMoved();

private:
    void settle(platform::ModifierFlags flags, bool ours);
    void enterOwnWindows();

    const KeyboardFocus& focus;
    bool hasOwnWindowsSource;
    Receiver receiver;
    platform::ModifierFlags current = 0;
    platform::ModifierFlags everywhere = 0;
    platform::ModifierFlags ownWindows = 0;
    /// Down since before our window got the keyboard, and not yet let go of.
    platform::ModifierFlags disregarded = 0;
    bool inOwnWindows = false;
};

} // namespace kelo::input
