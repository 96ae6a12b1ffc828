#include "linux/input/ModifierDispatch.h"

#include <utility>

namespace kelo::input {

using platform::ModifierFlags;

ModifierDispatch::ModifierDispatch(const KeyboardFocus& focus, bool hasOwnWindowsSource,
                                   Receiver receiver)
    : focus(focus), hasOwnWindowsSource(hasOwnWindowsSource), receiver(std::move(receiver)) {}

void ModifierDispatch::sawEverywhere(ModifierFlags flags) {
    everywhere = flags;
    // The focus costs a question to the display; nothing is asked for what changes nothing.
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
        // Our own source tells no more: what it last saw may be long over.
        settle(everywhere, false);
    }
}

// A chord that brought our window up is still held when the window gets the keyboard. Where nobody
// told us of its keys (a shortcut of the desktop's was pressed), they must not look like a new
// press of the chord, whose end would send the window away again.
void ModifierDispatch::enterOwnWindows() {
    if (!std::exchange(inOwnWindows, true))
        disregarded = ownWindows & ~current;
}

void ModifierDispatch::settle(ModifierFlags flags, bool ours) {
    if (std::exchange(current, flags) != flags)
        receiver(flags, ours);
}

} // namespace kelo::input
