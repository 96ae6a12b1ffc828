#pragma once

#include "base/Url.h"
#include "linux/gobject/GObjectPointer.h"
#include "posix/FileDescriptor.h"

#include <gio/gio.h>

#include <memory>
#include <string_view>

namespace kelo::http {

/// The one certificate authority that counts besides the system's trust store. Asked only about
/// chains that the system has refused.
class TrustedAuthority {
public:
    /// PEM text of the authority. Empty, or no certificate in it: nothing is ever accepted.
    explicit TrustedAuthority(std::string_view pem);
    ~TrustedAuthority();
    TrustedAuthority(const TrustedAuthority&) = delete;
    TrustedAuthority& operator=(const TrustedAuthority&) = delete;

    /// The one this build was configured with.
    static std::shared_ptr<const TrustedAuthority> compiledIn();

    /// No chain will ever hold.
    bool isEmpty() const { return !database; }

    /// What is wrong with the chain of a server at this URL if this authority is the only root:
    /// signatures, dates, purpose and host name. Zero: it holds.
    GTlsCertificateFlags problems(GTlsCertificate* certificate, const Url& url) const;

    bool accepts(GTlsCertificate* certificate, const Url& url) const {
        return problems(certificate, url) == 0;
    }

private:
    posix::FileDescriptor file;
    gobject::GObjectPointer<GTlsDatabase> database;
};

} // namespace kelo::http
