#include "linux/gtk/application/ToolkitStart.h"

#include "linux/gtk/kit/MenuEntryNames.h"

#include <gdk/gdk.h>
#include <glibmm/init.h>
#include <gtk/gtk.h>

namespace kelo::gtk {

namespace {

// Control + Shift + I and D open the toolkit's inspector in every window. It shows what is typed
// into any entry. Other classes of windows copy the handler when they are first used, so this comes
// first.
void turnOffInspectorKeys() {
    auto* const windowClass = static_cast<GtkWindowClass*>(g_type_class_ref(GTK_TYPE_WINDOW));
    windowClass->enable_debugging = [](GtkWindow*, gboolean) -> gboolean { return FALSE; };
    g_type_class_unref(windowClass);
}

} // namespace

// With the user's locale as the global C++ locale, streams in other rooms would group the digits of
// a port number. The C library has the user's locale since the start of the process.
void keepStreamsPlain() {
    Glib::set_init_to_users_preferred_locale(false);
}

void prepareForWindows() {
    turnOffInspectorKeys();
    nameEntriesOfMenus();
}

// The desktop may show a busy pointer until a window of the program appears, but an action may open
// no window.
void endStartUpNotice() {
    GdkDisplay* const display = gdk_display_get_default();
    const char* const identifier =
        display ? gdk_display_get_startup_notification_id(display) : nullptr;
    if (identifier)
        gdk_display_notify_startup_complete(display, identifier);
}

} // namespace kelo::gtk
