#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Takes from the engine's context menus what does nothing in a view of the program: its emoji
/// chooser, which opens for a key alone, and new windows for links, images, media and frames. A
/// menu that is left empty does not open.
void removeUselessMenuItems(WebKitWebView* view);

} // namespace kelo::webkit
