#include "linux/input/ModifierDispatch.h"

#include <utility>

namespace kelo::input {

using platform::ModifierFlags;

ModifierDispatch::ModifierDispatch(const KeyboardFocus& focus, bool hasOwnWindowsSource,
                                   Receiver receiver, OtherPressReceiver otherPressReceiver)
    : focus(focus),
      hasOwnWindowsSource(hasOwnWindowsSource),
      receiver(std::move(receiver)),
      otherPressReceiver(std::move(otherPressReceiver)) {}

void ModifierDispatch::sawEverywhere(ModifierFlags flags) {
    everywhere = flags;
    // Finding the focus costs a round trip to the display. Skip it if nothing has changed.
    if (flags == current)
        return;
    const bool ours = focus.isOurs();
    if (!ours || !hasOwnWindowsSource)
        settle(flags, ours);
}

void ModifierDispatch::sawInOwnWindows(ModifierFlags flags) {
    if (focus.isOurs()) {
        enterOwnWindows();
        disregarded &= flags;
        settle(flags & ~disregarded, true);
    }
    ownWindows = flags;
}

void ModifierDispatch::focusMoved() {
    if (focus.isOurs()) {
        enterOwnWindows();
        settle(ownWindows & ~disregarded, true);
    } else if (std::exchange(inOwnWindows, false)) {
        // Our own source reports nothing from now on, so its last state may be outdated.
        settle(everywhere, false);
    }
}

// Our own windows never see the keys that the desktop takes as its shortcuts, but the other source
// may. So both count wherever the keyboard is.
void ModifierDispatch::sawOtherPress() {
    constexpr ModifierFlags chord = platform::modifier::control | platform::modifier::option;
    // Nobody asks for the keys that are typed at other times. It also saves asking for the focus.
    if ((current & chord) == chord)
        otherPressReceiver(focus.isOurs());
}

// The chord that opened our window is still held when the window gets the keyboard. If it was a
// shortcut of the desktop, no source has reported its keys. They must not count as a new press of
// the chord, because releasing them would hide the window again.
void ModifierDispatch::enterOwnWindows() {
    if (!std::exchange(inOwnWindows, true))
        disregarded = ownWindows & ~current;
}

void ModifierDispatch::settle(ModifierFlags flags, bool ours) {
    if (std::exchange(current, flags) != flags)
        receiver(flags, ours);
}

} // namespace kelo::input
