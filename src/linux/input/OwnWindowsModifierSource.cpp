#include "linux/input/OwnWindowsModifierSource.h"

#include "base/Translation.h"

#include <gdk/gdk.h>

#include <utility>

namespace kelo::input {

namespace {

GdkDevice* defaultKeyboard() {
    GdkDisplay* const display = gdk_display_get_default();
    GdkSeat* const seat = display ? gdk_display_get_default_seat(display) : nullptr;
    return seat ? gdk_seat_get_keyboard(seat) : nullptr;
}

} // namespace

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

OwnWindowsModifierSource::~OwnWindowsModifierSource() {
    if (connection)
        g_signal_handler_disconnect(keyboard.get(), connection);
}

Availability OwnWindowsModifierSource::availability() const {
    if (!defaultKeyboard())
        return {false, translated("There is no keyboard."),
                translated("Plug one in and start Kelo again.")};
    return {true, translated("Control + Alt works in Kelo's own windows."), ""};
}

bool OwnWindowsModifierSource::start(Handler wanted) {
    keyboard = gobject::GObjectPointer<GdkDevice>::share(defaultKeyboard());
    if (!keyboard)
        return false;
    handler = std::move(wanted);
    connection = g_signal_connect_swapped(
        keyboard.get(), "notify::modifier-state",
        G_CALLBACK(+[](OwnWindowsModifierSource* self) { self->changed(); }), this);
    return true;
}

void OwnWindowsModifierSource::changed() {
    handler(flagsFromGdk(gdk_device_get_modifier_state(keyboard.get())));
}

} // namespace kelo::input
