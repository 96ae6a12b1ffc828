#include "linux/window/DialogWatch.h"

#include "linux/gobject/SignalHandler.h"

#include <gtk/gtk.h>

#include <set>
#include <utility>

namespace kelo::window {

// Each watched window owns a share of it, because a window may outlive the watch, and the watch
// must not keep a window alive.
struct DialogWatch::State {
    GtkWindow* owner;
    std::function<void(GtkWindow*)> changed;
    std::set<GtkWindow*> shown;

    void follow(GtkWindow* window, const std::shared_ptr<State>& self) {
        const auto appeared =
            +[](GtkWindow* window, std::shared_ptr<State>* state) { (*state)->appeared(window); };
        const auto left =
            +[](GtkWindow* window, std::shared_ptr<State>* state) { (*state)->left(window); };
        gobject::connectWithState(window, "map", appeared, self);
        gobject::connectWithState(window, "unmap", left, self);
    }

    void appeared(GtkWindow* window) {
        // Asked now, because a window becomes a dialog some time after it was made. The engine's
        // colour chooser is not modal.
        const bool isDialog =
            gtk_window_get_modal(window) || gtk_window_get_transient_for(window) == owner;
        if (!isDialog || !shown.insert(window).second)
            return;
        if (changed)
            changed(window);
    }

    void left(GtkWindow* window) {
        if (shown.erase(window) > 0 && changed && shown.empty())
            changed(nullptr);
    }
};

DialogWatch::DialogWatch(GtkWindow* owner, std::function<void(GtkWindow*)> changed)
    : state(std::make_shared<State>(State{owner, std::move(changed), {}})),
      toplevels([state = state](GtkWindow* window) {
          state->follow(window, state);
          if (gtk_widget_get_mapped(GTK_WIDGET(window)))
              state->appeared(window);
      }) {}

DialogWatch::~DialogWatch() {
    state->changed = nullptr;
}

bool DialogWatch::anyShown() const {
    return !state->shown.empty();
}

} // namespace kelo::window
