#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// The engine's widget for a view of this frame and configuration, and its form of a request.
/// Message handlers and permissions are added by others.
gobject::GObjectPointer<WebKitWebView>
makeNativeView(WebKitNetworkSession* session, platform::Rectangle frame,
               const platform::WebViewConfiguration& configuration);

gobject::GObjectPointer<WebKitURIRequest> nativeRequest(const platform::UrlRequest& request);

} // namespace kelo::webkit
