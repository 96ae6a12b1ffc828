#pragma once

#include "linux/glib/FileDescriptor.h"
#include "linux/glib/GObjectPointer.h"
#include "platform/Url.h"

#include <gio/gio.h>

#include <memory>
#include <string_view>

namespace kelo::desktop {

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
    GTlsCertificateFlags problems(GTlsCertificate* certificate, const platform::Url& url) const;

    bool accepts(GTlsCertificate* certificate, const platform::Url& url) const {
        return problems(certificate, url) == 0;
    }

private:
    FileDescriptor file;
    GObjectPointer<GTlsDatabase> database;
};

} // namespace kelo::desktop
