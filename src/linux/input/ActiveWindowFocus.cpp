#include "linux/input/ActiveWindowFocus.h"

#include "linux/gobject/SignalHandler.h"

#include <gtk/gtk.h>

#include <utility>

namespace kelo::input {

struct ActiveWindowFocus::Pending {
    std::function<void()> changed;
    guint job = 0;

    static void activeChanged(GtkWindow*, GParamSpec*, std::shared_ptr<Pending>* pending) {
        Pending& self = **pending;
        // The keyboard moves from one of our windows to another in two steps. Wait for both.
        if (self.changed && self.job == 0)
            self.job = g_idle_add(look, &self);
    }

    static gboolean look(gpointer data) {
        auto& self = *static_cast<Pending*>(data);
        self.job = 0;
        self.changed();
        return G_SOURCE_REMOVE;
    }
};

ActiveWindowFocus::ActiveWindowFocus()
    : pending(std::make_shared<Pending>()), toplevels([pending = pending](GtkWindow* window) {
          gobject::connectWithState(window, "notify::is-active", Pending::activeChanged, pending);
      }) {}

ActiveWindowFocus::~ActiveWindowFocus() {
    pending->changed = nullptr;
    if (pending->job)
        g_source_remove(pending->job);
}

void ActiveWindowFocus::onChange(std::function<void()> changed) {
    pending->changed = std::move(changed);
}

} // namespace kelo::input
