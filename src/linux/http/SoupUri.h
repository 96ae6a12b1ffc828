#pragma once

#include "base/Url.h"

#include <libsoup/soup.h>

#include <memory>
#include <string>

namespace kelo::http {

struct SoupUriDeleter {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};
using SoupUri = std::unique_ptr<GUri, SoupUriDeleter>;

/// Paths and queries stay as they are written. Null for a text that is no URI.
inline constexpr GUriFlags soupUriFlags = static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS);

inline SoupUri soupUri(const Url& url) {
    return SoupUri(g_uri_parse(url.absoluteString().c_str(), soupUriFlags, nullptr));
}

} // namespace kelo::http
