#pragma once

#include "base/Url.h"
#include "linux/gobject/GLibHandles.h"

#include <libsoup/soup.h>

#include <string>

namespace kelo::http {

using SoupUri = gobject::GUriPointer;

/// Paths and queries keep their spelling.
inline constexpr GUriFlags soupUriFlags = static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS);

/// Null for a text that is no URI.
inline SoupUri soupUri(const Url& url) {
    return SoupUri(g_uri_parse(url.absoluteString().c_str(), soupUriFlags, nullptr));
}

} // namespace kelo::http
