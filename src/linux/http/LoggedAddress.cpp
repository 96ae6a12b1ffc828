#include "linux/http/LoggedAddress.h"

#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <algorithm>
#include <string_view>

namespace kelo::http {

namespace {

/// GLib reads "x:.///", but cannot write it: without a host, "//" would begin one.
bool canBeWritten(GUri* uri) {
    return g_uri_get_host(uri) || !g_str_has_prefix(g_uri_get_path(uri), "//");
}

/// On one line, and without what would look like a query or a fragment.
bool isOriginAndPath(std::string_view text) {
    return std::ranges::none_of(
        text, [](unsigned char c) { return c < 0x20 || c == 0x7f || c == '?' || c == '#'; });
}

} // namespace

std::string loggedAddress(const char* address) {
    // Encoded, so that a line break in the path cannot forge a second line of the log.
    const gobject::GUriPointer uri(address ? g_uri_parse(address, G_URI_FLAGS_ENCODED, nullptr)
                                           : nullptr);
    if (!uri || !canBeWritten(uri.get()))
        return "(no address)";
    const auto hidden =
        static_cast<GUriHideFlags>(G_URI_HIDE_USERINFO | G_URI_HIDE_QUERY | G_URI_HIDE_FRAGMENT);
    const gobject::GText text(g_uri_to_string_partial(uri.get(), hidden));
    // The host is decoded all the same.
    return text && isOriginAndPath(text.get()) ? text.get() : "(no address)";
}

} // namespace kelo::http
