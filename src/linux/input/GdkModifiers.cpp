#include "linux/input/GdkModifiers.h"

#include <gdk/gdk.h>

namespace kelo::input {

platform::ModifierFlags flagsFromGdk(unsigned state) {
    namespace modifier = platform::modifier;
    platform::ModifierFlags flags = 0;
    if (state & GDK_LOCK_MASK)
        flags |= modifier::capsLock;
    if (state & GDK_SHIFT_MASK)
        flags |= modifier::shift;
    if (state & GDK_CONTROL_MASK)
        flags |= modifier::control;
    if (state & GDK_ALT_MASK)
        flags |= modifier::option;
    // Most layouts report Meta together with Alt.
    if (state & GDK_SUPER_MASK || (state & GDK_META_MASK && !(state & GDK_ALT_MASK)))
        flags |= modifier::command;
    return flags;
}

} // namespace kelo::input
