#pragma once

#include <gtk/gtk.h>

namespace kelo::gtk {

/// A new entry whose text neither the screen nor the accessibility bus shows. Every program of the
/// user can listen on that bus and ask there; it learns how many characters there are, and where
/// the caret is. A screen reader needs no more.
GtkWidget* makeMaskedEntry();

/// The entry's own text, for its owner. What gtk_editable_get_text() says of it is a row of masks.
GtkEditable* ownTextOf(GtkWidget* maskedEntry);

} // namespace kelo::gtk
