#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Underlines misspelt words in all views of the view's context, in the languages of the user, from
/// the first text on that comes into one of them: typed, pasted by keys, or from an input method.
/// Until then no dictionary is read, which takes the start some 40 ms and 9 MiB for each. The
/// dictionaries are those that are installed for the desktop's other programs; a language without
/// one is left out. Call it once for each view.
void checkSpellingOfText(WebKitWebView* view);

} // namespace kelo::webkit
