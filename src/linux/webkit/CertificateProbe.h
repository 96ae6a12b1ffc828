#pragma once

#include "base/Url.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/TrustedAuthority.h"

#include <webkit/webkit.h>

#include <memory>
#include <set>
#include <string>

namespace kelo::webkit {

/// Fetches the certificate of a host while the engine still starts its processes for the first
/// load, and allows it if the compiled-in authority has issued it. Otherwise the engine would
/// refuse the certificate first and have to load the page again, which takes about 60 ms. That is
/// still what happens when the load is faster than the probe, or meets another certificate.
class CertificateProbe {
public:
    CertificateProbe(gobject::GObjectPointer<WebKitNetworkSession> session,
                     std::shared_ptr<const http::TrustedAuthority> authority);

    /// Probes each https origin once whose host the authority vouches for. Ends the connection
    /// during the TLS handshake.
    void start(const Url& url);

private:
    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<const http::TrustedAuthority> authority;
    std::set<std::string> probedOrigins;
};

} // namespace kelo::webkit
