#pragma once

#include "base/Url.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/TrustedAuthority.h"

#include <webkit/webkit.h>

#include <memory>
#include <set>
#include <string>

namespace kelo::webkit {

/// Looks at the certificate of a host while the engine is still starting its processes for the
/// first load, and lets it through if the compiled-in authority vouches for it. Without that, the
/// engine would meet an unknown certificate, fail, and have to load again: about 60 ms, and not
/// free of races of its own. A load that comes first, or meets another certificate, takes that
/// longer road.
class CertificateProbe {
public:
    CertificateProbe(gobject::GObjectPointer<WebKitNetworkSession> session,
                     std::shared_ptr<const http::TrustedAuthority> authority);

    /// Once for each origin, and for https only. Sends nothing but the greeting of TLS.
    void start(const Url& url);

private:
    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<const http::TrustedAuthority> authority;
    std::set<std::string> looked;
};

} // namespace kelo::webkit
