#include "linux/webkit/KeptProcesses.h"

#include <utility>

namespace kelo::webkit {

KeptProcesses::KeptProcesses(gobject::GObjectPointer<WebKitNetworkSession> session)
    : session(std::move(session)) {}

// The engine ends them when what a session has in memory is removed, and has no other call for it.
// Doing so for every page would cost the next page of the same host what the two have in common.
void KeptProcesses::pageArrived(const std::optional<Url>& address) {
    const std::string host = address ? address->host() : "";
    if (std::exchange(shownHost, host) == host)
        return;
    constexpr GTimeSpan ofAnyAge = 0;
    webkit_website_data_manager_clear(
        webkit_network_session_get_website_data_manager(session.get()),
        WEBKIT_WEBSITE_DATA_MEMORY_CACHE, ofAnyAge, nullptr, nullptr, nullptr);
}

} // namespace kelo::webkit
