#include "linux/webkit/navigation/LoadErrors.h"

#include "base/Translation.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

namespace {

bool needsNoNetwork(const std::string& host) {
    return host == "localhost" || host.ends_with(".localhost") || host.starts_with("127.") ||
           host == "[::1]";
}

} // namespace

bool isReplaced(const GError& error) {
    return g_error_matches(&error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
           g_error_matches(&error, WEBKIT_POLICY_ERROR,
                           WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
}

// Either the engine's network process has ended, an error that has no name in the library's
// interface. Or the engine has cancelled the load by itself, which it sometimes does instead of
// refusing a certificate.
bool isLostByTheEngine(const GError& error) {
    constexpr int internalError = 300;
    return g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CANCELLED) ||
           (error.domain == g_quark_from_static_string("WebKitErrorDomain") &&
            error.code == internalError);
}

bool isOnline() {
    return g_network_monitor_get_network_available(g_network_monitor_get_default());
}

std::string unreachableHeading(const std::optional<Url>& page, bool isOnline) {
    if (!page)
        return translated("This page did not load");
    return isOnline || needsNoNetwork(page->host())
               ? translated("Kelo cannot reach %1", {page->host()})
               : translated("You seem to be offline");
}

} // namespace kelo::webkit
