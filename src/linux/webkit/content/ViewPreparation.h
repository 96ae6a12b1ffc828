#pragma once

#include "base/Url.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Gives a view what every view has: a name for assistive technology, the keys, the menus that hold
/// only what works, and for the service's pages pasted images and dropped files. Once for each
/// view, before its first page.
void prepareView(WebKitWebView* view, const Url& service);

} // namespace kelo::webkit
