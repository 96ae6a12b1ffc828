#pragma once

#include "linux/input/source/KeyboardFocus.h"
#include "platform/EventMonitors.h"

#include <functional>

namespace kelo::input {

/// Combines two sources of modifiers into one stream of changes. While a window of ours has the
/// keyboard, the source of our own windows counts, if there is one. Otherwise, the other one
/// counts. A change that both see is reported once. Another press counts from either source, but
/// only while Control and Option are both down. Main thread only.
class ModifierDispatch {
public:
    /// Receives the modifiers after a change, and whether a window of ours has the keyboard.
    using Receiver = std::function<void(platform::ModifierFlags, bool ours)>;
    /// Learns that there was another press, and whether a window of ours has the keyboard.
    using OtherPressReceiver = std::function<void(bool ours)>;

    /// The focus must outlive the dispatch.
    ModifierDispatch(const KeyboardFocus& focus, bool hasOwnWindowsSource, Receiver receiver,
                     OtherPressReceiver otherPressReceiver);

    void sawEverywhere(platform::ModifierFlags flags);
    void sawInOwnWindows(platform::ModifierFlags flags);
    /// Call it when the focus may have changed. Needed only with a source of our own windows.
    void focusMoved();
    /// A key other than a modifier, or a mouse button, went down. Both sources may report the same
    /// press.
    void sawOtherPress();

private:
    void settle(platform::ModifierFlags flags, bool ours);
    void enterOwnWindows();

    const KeyboardFocus& focus;
    bool hasOwnWindowsSource;
    Receiver receiver;
    OtherPressReceiver otherPressReceiver;
    platform::ModifierFlags current = 0;
    platform::ModifierFlags everywhere = 0;
    platform::ModifierFlags ownWindows = 0;
    /// Modifiers that were down before our window got the keyboard and are still down.
    platform::ModifierFlags disregarded = 0;
    bool inOwnWindows = false;
};

} // namespace kelo::input
