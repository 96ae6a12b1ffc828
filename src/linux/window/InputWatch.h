#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <functional>

typedef struct _GtkEventController GtkEventController;
typedef struct _GtkWidget GtkWidget;

namespace kelo::window {

/// Calls a function each time the user presses a key or a button in a widget, or touches it, before
/// the widget hears of it. The destructor ends the watch. Main thread only.
class InputWatch {
public:
    InputWatch(GtkWidget* widget, std::function<void()> began);
    ~InputWatch();
    InputWatch(const InputWatch&) = delete;
    InputWatch& operator=(const InputWatch&) = delete;

private:
    std::function<void()> began;
    gobject::GObjectPointer<GtkEventController> controller;
    unsigned long connection;
};

} // namespace kelo::window
