#pragma once

#include <gtk/gtk.h>

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

} // namespace kelo::window
