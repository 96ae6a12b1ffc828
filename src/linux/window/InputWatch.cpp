#include "linux/window/InputWatch.h"

#include <gtk/gtk.h>

#include <utility>

namespace kelo::window {

namespace {

gboolean seen(GtkEventControllerLegacy*, GdkEvent* event, const std::function<void()>* began) {
    const GdkEventType type = gdk_event_get_event_type(event);
    if (type == GDK_BUTTON_PRESS || type == GDK_KEY_PRESS || type == GDK_TOUCH_BEGIN)
        (*began)();
    return FALSE;
}

} // namespace

InputWatch::InputWatch(GtkWidget* widget, std::function<void()> began)
    : began(std::move(began)),
      controller(
          gobject::GObjectPointer<GtkEventController>::adopt(gtk_event_controller_legacy_new())),
      connection(g_signal_connect(controller.get(), "event", G_CALLBACK(seen), &this->began)) {
    gtk_event_controller_set_propagation_phase(controller.get(), GTK_PHASE_CAPTURE);
    gtk_widget_add_controller(widget, GTK_EVENT_CONTROLLER(g_object_ref(controller.get())));
}

InputWatch::~InputWatch() {
    g_signal_handler_disconnect(controller.get(), connection);
    if (GtkWidget* const widget = gtk_event_controller_get_widget(controller.get()))
        gtk_widget_remove_controller(widget, controller.get());
}

} // namespace kelo::window
