#pragma once

#include "platform/Window.h"

#include <memory>

extern "C" {
typedef struct _GtkWindow GtkWindow;
}

namespace kelo::window {

/// Notes which window of the system's a toolkit window is. Held weakly.
void setWindowIdentity(GtkWindow* window, std::weak_ptr<platform::Window> identity);

/// Null for a toolkit window that the system does not know (a dialog of the toolkit's own), and
/// when the system has let go of it.
std::shared_ptr<platform::Window> windowIdentity(GtkWindow* window);

} // namespace kelo::window
