#pragma once

#include "linux/glib/GObjectPointer.h"
#include "linux/http/TrustedAuthority.h"
#include "platform/Url.h"

#include <webkit/webkit.h>

#include <memory>
#include <set>
#include <string>

namespace kelo::desktop {

/// Looks at the certificate of a host while the engine is still starting its processes for the
/// first load, and lets it through if the compiled-in authority vouches for it. Without that, the
/// engine would meet an unknown certificate, fail, and have to load again: about 60 ms, and not
/// free of races of its own. A load that comes first, or meets another certificate, takes that
/// longer road.
class CertificateProbe {
public:
    CertificateProbe(GObjectPointer<WebKitNetworkSession> session,
                     std::shared_ptr<const TrustedAuthority> authority);

    /// Once for each origin, and for https only. Sends nothing but the greeting of TLS.
    void start(const platform::Url& url);

private:
    GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<const TrustedAuthority> authority;
    std::set<std::string> looked;
};

} // namespace kelo::desktop
