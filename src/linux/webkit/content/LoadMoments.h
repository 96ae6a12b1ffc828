#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Marks that there is the view, and from now on the stages of its loads (Moments.h), if moments
/// are followed.
void markLoads(WebKitWebView* view);

} // namespace kelo::webkit
