#include "linux/window/Toplevels.h"

#include <gtk/gtk.h>

#include <utility>

namespace kelo::window {

namespace {

gobject::GObjectPointer<GtkWindow> windowAt(GListModel* list, unsigned position) {
    return gobject::GObjectPointer<GtkWindow>::adopt(
        GTK_WINDOW(g_list_model_get_item(list, position)));
}

constexpr const char* distrusted = "kelo-distrusted-activity";

bool hasKeyboard(GtkWindow* window) {
    return gtk_widget_get_mapped(GTK_WIDGET(window)) && gtk_window_is_active(window) &&
           !g_object_get_data(G_OBJECT(window), distrusted);
}

} // namespace

ToplevelWatch::ToplevelWatch(Handler handler)
    : handler(std::move(handler)),
      toplevels(gobject::GObjectPointer<GListModel>::share(gtk_window_get_toplevels())),
      connection(
          g_signal_connect(toplevels.get(), "items-changed", G_CALLBACK(itemsChanged), this)) {
    itemsChanged(toplevels.get(), 0, 0, g_list_model_get_n_items(toplevels.get()), this);
}

ToplevelWatch::~ToplevelWatch() {
    g_signal_handler_disconnect(toplevels.get(), connection);
}

void ToplevelWatch::itemsChanged(GListModel* list, unsigned position, unsigned, unsigned added,
                                 void* self) {
    for (unsigned at = position; at < position + added; ++at)
        static_cast<ToplevelWatch*>(self)->handler(windowAt(list, at).get());
}

GtkWindow* activeToplevel() {
    GListModel* const list = gtk_window_get_toplevels();
    for (unsigned at = 0; at < g_list_model_get_n_items(list); ++at) {
        const auto window = windowAt(list, at);
        if (hasKeyboard(window.get()))
            return window.get();
    }
    return nullptr;
}

void distrustActivity(GtkWindow* window) {
    g_object_set_data(G_OBJECT(window), distrusted, window);
}

void trustActivity(GtkWindow* window) {
    g_object_set_data(G_OBJECT(window), distrusted, nullptr);
}

} // namespace kelo::window
