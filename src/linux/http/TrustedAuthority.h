#pragma once

#include "base/Url.h"
#include "linux/gobject/GObjectPointer.h"
#include "posix/FileDescriptor.h"

#include <gio/gio.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::http {

/// The one certificate authority that is trusted besides the system's trust store, for a few hosts
/// and for no other: whoever holds its key can pretend to be these hosts alone. Consulted only for
/// chains that the system has refused.
class TrustedAuthority {
public:
    /// PEM text of the authority. If it is empty or holds no certificate, nothing is accepted.
    /// hosts: as a Url puts them; the case of their letters does not matter.
    TrustedAuthority(std::string_view pem, std::vector<std::string> hosts);
    ~TrustedAuthority();
    TrustedAuthority(const TrustedAuthority&) = delete;
    TrustedAuthority& operator=(const TrustedAuthority&) = delete;

    /// The authority that the build was configured with, for the service's host; it vouches for
    /// nobody if the build names none.
    static std::shared_ptr<const TrustedAuthority> compiledIn();
    /// The same for one more host.
    static std::shared_ptr<const TrustedAuthority> compiledInFor(const std::string& anotherHost);

    /// Whether there is an authority and the URL's host is one of its hosts, on whichever port.
    bool vouchesFor(const Url& url) const;

    /// Verifies the chain of a server at this URL with this authority as the only root: signatures,
    /// dates, purpose and host name. Zero if it is valid. The authority is an unknown one for any
    /// host that it does not vouch for.
    GTlsCertificateFlags problems(GTlsCertificate* certificate, const Url& url) const;

    bool accepts(GTlsCertificate* certificate, const Url& url) const {
        return problems(certificate, url) == 0;
    }

private:
    std::vector<std::string> hosts;
    posix::FileDescriptor file;
    gobject::GObjectPointer<GTlsDatabase> database;
};

} // namespace kelo::http
