#include "linux/input/ActiveWindowFocus.h"

#include "linux/gobject/MainLoopSource.h"
#include "linux/gobject/SignalHandler.h"

#include <gtk/gtk.h>

#include <utility>

namespace kelo::input {

struct ActiveWindowFocus::Pending {
    std::function<void()> changed;
    gobject::ScheduledJob look;

    static void activeChanged(GtkWindow*, GParamSpec*, std::shared_ptr<Pending>* pending) {
        lookLater(**pending);
    }

    static void shownOrHidden(GtkWidget*, std::shared_ptr<Pending>* pending) {
        lookLater(**pending);
    }

    // The keyboard moves from one of our windows to another in two steps. Wait for both.
    static void lookLater(Pending& self) {
        if (self.changed && !self.look.isWaiting())
            self.look.whenIdle([&self] { self.changed(); });
    }
};

ActiveWindowFocus::ActiveWindowFocus()
    : pending(std::make_shared<Pending>()), toplevels([pending = pending](GtkWindow* window) {
          gobject::connectWithState(window, "notify::is-active", Pending::activeChanged, pending);
          for (const char* signal : {"map", "unmap"})
              gobject::connectWithState(window, signal, Pending::shownOrHidden, pending);
      }) {}

ActiveWindowFocus::~ActiveWindowFocus() {
    pending->changed = nullptr;
    pending->look.cancel();
}

void ActiveWindowFocus::onChange(std::function<void()> changed) {
    pending->changed = std::move(changed);
}

} // namespace kelo::input
