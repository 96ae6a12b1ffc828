#pragma once

#include <gtk/gtk.h>

#include <string>

namespace kelo::window {

// What the toolkit does since a version that is newer than the oldest one Kelo is built with. Only
// here are versions compared, and each has a name that says what is meant.

/// Whether the toolkit that this is built with tells a Wayland compositor the activation token of
/// the window that appears (4.10). An older one tells the token of the display.
constexpr bool tellsTokenOfWindow = GTK_CHECK_VERSION(4, 10, 0);

/// Whether the toolkit that runs reads GDK_DISABLE, and complains of values of GDK_DEBUG that mean
/// the same (4.18). GTK need not be initialized.
inline bool readsDisableVariable() {
    return gtk_get_minor_version() >= 18;
}

/// Whether the toolkit that this is built with can ask a screen reader to say something (4.14).
constexpr bool canAnnounce = GTK_CHECK_VERSION(4, 14, 0);

/// Asks a screen reader to say the sentence once it is silent; an older toolkit cannot.
inline void announce([[maybe_unused]] GtkAccessible* source,
                     [[maybe_unused]] const std::string& sentence) {
#if GTK_CHECK_VERSION(4, 14, 0)
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    GtkATContext* const context = gtk_accessible_get_at_context(source);
    // What GTK_A11Y=test asks for cannot announce, and the toolkit calls it all the same and
    // crashes: https://gitlab.gnome.org/GNOME/gtk/-/blob/4.18.6/gtk/gtkatcontext.c#L1686 To be
    // removed when every GTK since 4.14 that we run on has a function there.
    const bool isForTests = context && g_str_equal(G_OBJECT_TYPE_NAME(context), "GtkTestATContext");
    if (context && !isForTests)
        gtk_accessible_announce(source, sentence.c_str(),
                                GTK_ACCESSIBLE_ANNOUNCEMENT_PRIORITY_MEDIUM);
    if (context)
        g_object_unref(context);
    G_GNUC_END_IGNORE_DEPRECATIONS
#endif
}

} // namespace kelo::window
