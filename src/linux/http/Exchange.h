#pragma once

#include "base/Failure.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/Deadline.h"
#include "linux/http/TransportErrors.h"
#include "linux/http/TrustedAuthority.h"
#include "platform/UrlRequest.h"

#include <libsoup/soup.h>

#include <memory>
#include <string>

namespace kelo::http {

/// Follows one message to the server: sets up its connection, judges the certificate, and knows
/// what a failure means at the point that was reached. Main thread only.
class Exchange {
public:
    /// Follows the message until the message is destroyed. The deadline's GCancellable ends it.
    static std::shared_ptr<Exchange> follow(SoupMessage* message,
                                            std::shared_ptr<const TrustedAuthority> authority,
                                            const platform::UrlRequest& request,
                                            const Deadline& deadline);

    /// Whether the request was given to a connection that leads to the server itself. Until then,
    /// any status is the answer of a proxy.
    bool hasReachedServer() const { return phase >= TransferPhase::awaitingReply; }
    void replyHasBegun() { phase = TransferPhase::insideReply; }

    /// Whether a name was not found, and it may have been the name of a proxy.
    bool mayLackProxy(const GError& error) const;
    /// Says which proxy (host and port) it was; empty if it was none.
    void setProxy(std::string name) { proxy = std::move(name); }

    /// The deadline that the exchange was given.
    Failure failure(const GError& error, const Deadline& deadline) const;
    /// What a status means that did not come from the server.
    Failure proxyRefusal(int status) const;

private:
    Exchange(std::shared_ptr<const TrustedAuthority> authority, const platform::UrlRequest& request,
             const Deadline& deadline);

    void connectionEvent(GSocketClientEvent event, GIOStream* connection);
    bool accepts(GTlsCertificate* certificate, GTlsCertificateFlags systemProblems);
    void countInterimReply();

    std::shared_ptr<const TrustedAuthority> authority;
    Url url;
    std::chrono::seconds timeout;
    gobject::GObjectPointer<GCancellable> cancellable;
    TransferPhase phase = TransferPhase::connecting;
    /// The proxy that is asked for a connection to the server, until it has given one.
    std::string proxy;
    bool proxyAnswers = false;
    GTlsCertificateFlags refused = static_cast<GTlsCertificateFlags>(0);
    int interimReplies = 0;
};

} // namespace kelo::http
