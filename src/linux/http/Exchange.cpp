#include "linux/http/Exchange.h"

#include "linux/gobject/SignalHandler.h"
#include "linux/http/ProxyName.h"

#include <utility>

namespace kelo::http {

namespace {

/// Servers send one or two: "100 Continue", "103 Early Hints".
constexpr int mostInterimReplies = 10;

// By default the library accepts a connection that ends without a TLS close notification. An
// attacker could then cut short a response that has no Content-Length.
// docs/decisions/0023-http-1.md says why HTTP/2 is not offered.
void prepareTls(GTlsConnection* connection) {
    const char* const protocols[] = {"http/1.1", nullptr};
    g_tls_connection_set_require_close_notify(connection, TRUE);
    g_tls_connection_set_advertised_protocols(connection, protocols);
}

} // namespace

Exchange::Exchange(std::shared_ptr<const TrustedAuthority> authority,
                   const platform::UrlRequest& request, const Deadline& deadline)
    : authority(std::move(authority)),
      url(request.url),
      timeout(request.timeout),
      cancellable(gobject::GObjectPointer<GCancellable>::share(deadline.cancellable())) {}

std::shared_ptr<Exchange> Exchange::follow(SoupMessage* message,
                                           std::shared_ptr<const TrustedAuthority> authority,
                                           const platform::UrlRequest& request,
                                           const Deadline& deadline) {
    using Shared = std::shared_ptr<Exchange>;
    const Shared exchange(new Exchange(std::move(authority), request, deadline));
    gobject::connectWithState(
        message, "network-event",
        +[](SoupMessage*, GSocketClientEvent event, GIOStream* connection, Shared* self) {
            (*self)->connectionEvent(event, connection);
        },
        exchange);
    // Runs only when the system's trust store has refused the chain.
    gobject::connectWithState(
        message, "accept-certificate",
        +[](SoupMessage*, GTlsCertificate* certificate, GTlsCertificateFlags problems,
            Shared* self) -> gboolean { return (*self)->accepts(certificate, problems); },
        exchange);
    gobject::connectWithState(
        message, "starting",
        +[](SoupMessage*, Shared* self) { (*self)->phase = TransferPhase::awaitingReply; },
        exchange);
    gobject::connectWithState(
        message, "got-informational",
        +[](SoupMessage*, Shared* self) { (*self)->countInterimReply(); }, exchange);
    return exchange;
}

void Exchange::connectionEvent(GSocketClientEvent event, GIOStream* connection) {
    switch (event) {
    case G_SOCKET_CLIENT_RESOLVING:
        // Also when the library sends a request once more because its connection was closed.
        phase = TransferPhase::connecting;
        proxy.clear();
        break;
    case G_SOCKET_CLIENT_CONNECTING:
        proxy = proxyBehind(connection);
        proxyAnswers = false;
        break;
    case G_SOCKET_CLIENT_CONNECTED:
        proxyAnswers = true;
        break;
    case G_SOCKET_CLIENT_TLS_HANDSHAKING:
        // What the connection carries from here on is between the server and this program.
        proxy.clear();
        if (G_IS_TLS_CONNECTION(connection))
            prepareTls(G_TLS_CONNECTION(connection));
        break;
    default:
        break;
    }
}

bool Exchange::accepts(GTlsCertificate* certificate, GTlsCertificateFlags systemProblems) {
    const GTlsCertificateFlags problems = authority->problems(certificate, url);
    const bool ourAuthority = (problems & G_TLS_CERTIFICATE_UNKNOWN_CA) == 0;
    refused = ourAuthority ? problems : systemProblems;
    return problems == 0;
}

// The library reads on without a turn of the main loop for as long as interim replies arrive. A
// server that sends nothing else would stop the whole program, and no timer would end it.
void Exchange::countInterimReply() {
    if (++interimReplies > mostInterimReplies)
        g_cancellable_cancel(cancellable.get());
}

bool Exchange::mayLackProxy(const GError& error) const {
    return phase == TransferPhase::connecting && proxy.empty() && error.domain == G_RESOLVER_ERROR;
}

Failure Exchange::failure(const GError& error, const Deadline& deadline) const {
    const bool proxyFailed = phase == TransferPhase::connecting && !proxy.empty();
    if (deadline.passed())
        return proxyFailed ? proxyTimeOutError(proxy, timeout) : timeOutError(url.host(), timeout);
    if (interimReplies > mostInterimReplies)
        return unreadableReplyError(url, "more interim replies than are read");
    if (refused != 0)
        return certificateError(refused, url);
    if (proxyFailed)
        return proxyAnswers ? proxyError(error, proxy, url) : noProxyError(error, proxy, url);
    return transportError(error, phase, url);
}

Failure Exchange::proxyRefusal(int status) const {
    return proxyRefusalError(status, proxy, url);
}

} // namespace kelo::http
