#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Gives a view the keys that the engine leaves to the program, or gets wrong. The page hears every
/// key first and may take it, except F7.
///
/// - Tab and Shift+Tab walk through the page, leave it at its end, and stop at the very next
///   control of the window.
/// - The Menu key and Shift+F10 open the page's own context menu, or a short one for the element
///   with the focus.
/// - Control with "." or ";" opens the engine's emoji chooser in a field that can be edited.
/// - F7 without modifiers turns caret browsing on and off: a caret in the page's text, which the
///   arrow keys move.
///
/// The engine shows every key to a hidden text view of the toolkit, a child of the view, to learn
/// which editing command it stands for. Left alone, this child takes the keyboard at the end of the
/// page and never gives it back, opens a menu and an emoji chooser for its own invisible text, and
/// ends the program at F7: it hides its caret and fails an assertion about the caret it never had.
/// Input methods do not need it: the engine asks them itself.
void attachPageKeyboard(WebKitWebView* view);

} // namespace kelo::webkit
