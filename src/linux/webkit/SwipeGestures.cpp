#include "linux/webkit/SwipeGestures.h"

namespace kelo::webkit {

SwipeGestures::SwipeGestures(WebKitWebView* view)
    : view(view),
      realized(gobject::connectSignal(
          view, "realize", +[](GtkWidget*, SwipeGestures* self) { self->apply(true); }, this)),
      unrealized(gobject::connectSignal(
          view, "unrealize", +[](GtkWidget*, SwipeGestures* self) { self->apply(false); }, this)) {}

void SwipeGestures::setAllowed(bool nowAllowed) {
    allowed = nowAllowed;
    apply(gtk_widget_get_realized(GTK_WIDGET(view)));
}

void SwipeGestures::apply(bool inWindow) {
    webkit_settings_set_enable_back_forward_navigation_gestures(webkit_web_view_get_settings(view),
                                                                allowed && inWindow);
}

} // namespace kelo::webkit
