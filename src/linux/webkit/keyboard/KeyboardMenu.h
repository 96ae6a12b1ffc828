#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Opens the context menu of the element with the focus, at its caret or below it. The page is
/// asked first, with an event "contextmenu", and may show a menu of its own. The engine has no such
/// menu for keys, so this one has only what it does for links and editable text, and for a
/// selection. In a frame of another origin there is none.
void showKeyboardMenu(WebKitWebView* view);

} // namespace kelo::webkit
