#include "linux/webkit/CaretBrowsing.h"

namespace kelo::webkit {

namespace {

gboolean toggle(GtkWidget* view, GVariant*, gpointer) {
    WebKitSettings* const settings = webkit_web_view_get_settings(WEBKIT_WEB_VIEW(view));
    webkit_settings_set_enable_caret_browsing(settings,
                                              !webkit_settings_get_enable_caret_browsing(settings));
    return TRUE;
}

} // namespace

void offerCaretBrowsing(WebKitWebView* view) {
    GtkEventController* const shortcuts = gtk_shortcut_controller_new();
    // Before the engine sees the key.
    gtk_event_controller_set_propagation_phase(shortcuts, GTK_PHASE_CAPTURE);
    gtk_shortcut_controller_add_shortcut(
        GTK_SHORTCUT_CONTROLLER(shortcuts),
        gtk_shortcut_new(gtk_keyval_trigger_new(GDK_KEY_F7, static_cast<GdkModifierType>(0)),
                         gtk_callback_action_new(toggle, nullptr, nullptr)));
    gtk_widget_add_controller(GTK_WIDGET(view), shortcuts);
}

} // namespace kelo::webkit
