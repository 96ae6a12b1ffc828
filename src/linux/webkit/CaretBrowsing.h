#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// F7 turns caret browsing on and off in the view: a caret in the page's text, which the arrow keys
/// move. The page does not get this key; with modifiers it does.
///
/// Without this the key ends the program. The engine shows every key to a hidden text view of the
/// toolkit, to learn which editing command it stands for. That view takes F7 for itself, as the key
/// that hides its caret, and then fails an assertion about the caret it never had.
void offerCaretBrowsing(WebKitWebView* view);

} // namespace kelo::webkit
