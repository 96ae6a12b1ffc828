#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <functional>

typedef struct _GListModel GListModel;
typedef struct _GtkWindow GtkWindow;

namespace kelo::window {

/// Calls a function once for each window of ours: at once for those that exist, later for each new
/// one. The destructor ends the watch. GTK must be initialized. Main thread only.
class ToplevelWatch {
public:
    using Handler = std::function<void(GtkWindow*)>;

    explicit ToplevelWatch(Handler handler);
    ~ToplevelWatch();
    ToplevelWatch(const ToplevelWatch&) = delete;
    ToplevelWatch& operator=(const ToplevelWatch&) = delete;

private:
    static void itemsChanged(GListModel* list, unsigned position, unsigned removed, unsigned added,
                             void* self);

    Handler handler;
    gobject::GObjectPointer<GListModel> toplevels;
    unsigned long connection;
};

/// The window of ours that has the keyboard, as far as the toolkit knows; or null. A hidden window
/// has not got it, whatever the toolkit takes for true.
GtkWindow* activeToplevel();

/// From now on this is not the activeToplevel(), until trustActivity().
void distrustActivity(GtkWindow* window);
void trustActivity(GtkWindow* window);

} // namespace kelo::window
