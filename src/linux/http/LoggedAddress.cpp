#include "linux/http/LoggedAddress.h"

#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

namespace kelo::http {

std::string loggedAddress(const char* address) {
    // Encoded, so that a line break in the path cannot forge a second line of the log.
    const gobject::GUriPointer uri(address ? g_uri_parse(address, G_URI_FLAGS_ENCODED, nullptr)
                                           : nullptr);
    if (!uri)
        return "(no address)";
    const auto hidden =
        static_cast<GUriHideFlags>(G_URI_HIDE_USERINFO | G_URI_HIDE_QUERY | G_URI_HIDE_FRAGMENT);
    const gobject::GText text(g_uri_to_string_partial(uri.get(), hidden));
    return text ? text.get() : "(no address)";
}

} // namespace kelo::http
