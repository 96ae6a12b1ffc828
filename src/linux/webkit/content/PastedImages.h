#pragma once

#include "base/Url.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Lets the service's pages have the image when the user pastes one: event.clipboardData then holds
/// it as a file, as in other browsers. The engine hands pages an empty event, and the image only to
/// those that call navigator.clipboard.read().
///
/// While the clipboard holds an image and no text, the page gets a paste event of the program's
/// instead of the engine's, and a moment later. If it leaves it alone, the image is inserted where
/// the engine would have inserted it. Every other paste is untouched. The script runs in a world of
/// the program's own, in frames of the service alone.
void offerPastedImages(WebKitWebView* view, const Url& service);

} // namespace kelo::webkit
