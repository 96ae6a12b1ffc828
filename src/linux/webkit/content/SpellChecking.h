#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Underlines misspelt words in all views of the context, in the languages of the user. The
/// dictionaries are those that are installed for the desktop's other programs; a language without
/// one is left out.
void checkSpelling(WebKitWebContext* context);

} // namespace kelo::webkit
