#pragma once

#include "platform/Window.h"

#include <memory>

extern "C" {
typedef struct _GtkWindow GtkWindow;
}

namespace kelo::window {

/// Associates a toolkit window with the platform window it implements. Held weakly.
void setWindowIdentity(GtkWindow* window, std::weak_ptr<platform::Window> identity);

/// The associated platform window. Null for a toolkit window without one, such as the toolkit's
/// own dialogs, and once the platform window has been destroyed.
std::shared_ptr<platform::Window> windowIdentity(GtkWindow* window);

} // namespace kelo::window
