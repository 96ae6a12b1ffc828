#pragma once

#include "base/Url.h"
#include "linux/gobject/GObjectPointer.h"
#include "posix/FileDescriptor.h"

#include <gio/gio.h>

#include <memory>
#include <string_view>

namespace kelo::http {

/// The one certificate authority that is trusted besides the system's trust store. Consulted only
/// for chains that the system has refused.
class TrustedAuthority {
public:
    /// PEM text of the authority. If it is empty or holds no certificate, nothing is accepted.
    explicit TrustedAuthority(std::string_view pem);
    ~TrustedAuthority();
    TrustedAuthority(const TrustedAuthority&) = delete;
    TrustedAuthority& operator=(const TrustedAuthority&) = delete;

    /// The authority that the build was configured with; isEmpty() if there is none.
    static std::shared_ptr<const TrustedAuthority> compiledIn();

    /// Without an authority, every chain is refused.
    bool isEmpty() const { return !database; }

    /// Verifies the chain of a server at this URL with this authority as the only root: signatures,
    /// dates, purpose and host name. Zero if it is valid.
    GTlsCertificateFlags problems(GTlsCertificate* certificate, const Url& url) const;

    bool accepts(GTlsCertificate* certificate, const Url& url) const {
        return problems(certificate, url) == 0;
    }

private:
    posix::FileDescriptor file;
    gobject::GObjectPointer<GTlsDatabase> database;
};

} // namespace kelo::http
