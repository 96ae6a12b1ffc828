#pragma once

#include "base/Url.h"
#include "linux/gobject/GObjectPointer.h"

#include <webkit/webkit.h>

#include <optional>
#include <string>

namespace kelo::webkit {

/// Ends the processes that the engine keeps, with some 60 MiB each, for pages that a view has left.
/// The engine begins each view with a process, and takes another one if the answer isolates its
/// windows from those of other origins (Cross-Origin-Opener-Policy). The first has shown nothing
/// then, and would be kept for half an hour.
class KeptProcesses {
public:
    explicit KeptProcesses(gobject::GObjectPointer<WebKitNetworkSession> session);

    /// A page has been loaded. If it is the view's first, or of another host than the one before,
    /// processes that show nothing end, and the engine forgets the pages of the session that can be
    /// gone back to; going back loads them again.
    void pageArrived(const std::optional<Url>& address);

private:
    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::string shownHost;
};

} // namespace kelo::webkit
