#include "linux/webkit/CertificateProbe.h"

#include "base/async/Spawn.h"
#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/SignalHandler.h"

namespace kelo::webkit {

namespace {

struct Probe {
    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<const http::TrustedAuthority> authority;
    Url url;
    gobject::SignalConnection certificateHandler = {};
};
using SharedProbe = std::shared_ptr<Probe>;

// GIO may destroy the connection on one of its own threads. The handler is disconnected on the main
// thread before, when the probe ends or is dropped.
struct ProbeScope {
    SharedProbe probe;
    ~ProbeScope() { probe->certificateHandler = {}; }
};

// Called for every certificate, because the connection has no trust store. The probe needs nothing
// but the certificate, so it always refuses and the connection ends.
gboolean acceptCertificate(GTlsConnection*, GTlsCertificate* certificate, GTlsCertificateFlags,
                           Probe* probe) {
    if (probe->authority->accepts(certificate, probe->url))
        webkit_network_session_allow_tls_certificate_for_host(probe->session.get(), certificate,
                                                              probe->url.host().c_str());
    return FALSE;
}

// Without a trust store every certificate is reported. The engine itself accepts those that the
// system trusts; reading them here would take 30 ms, so the connection is made without from the
// start.
gobject::GObjectPointer<GTlsConnection> connectionWithoutTrust(GIOStream* stream, const Url& url) {
    const auto server = gobject::GObjectPointer<GSocketConnectable>::adopt(
        g_network_address_parse_uri(url.absoluteString().c_str(), 443, nullptr));
    return gobject::GObjectPointer<GTlsConnection>::adopt(static_cast<GTlsConnection*>(
        g_initable_new(g_tls_backend_get_client_connection_type(g_tls_backend_get_default()),
                       nullptr, nullptr, "base-io-stream", stream, "server-identity", server.get(),
                       "database", nullptr, nullptr)));
}

Task<void> run(SharedProbe probe) {
    const ProbeScope scope{probe};
    constexpr guint seconds = 10;
    const auto client = gobject::GObjectPointer<GSocketClient>::adopt(g_socket_client_new());
    g_socket_client_set_timeout(client.get(), seconds);
    const auto connect = [&client, &probe](GAsyncReadyCallback ready, gpointer data) {
        g_socket_client_connect_to_uri_async(client.get(), probe->url.absoluteString().c_str(), 443,
                                             nullptr, ready, data);
    };
    const auto connected = co_await gobject::asyncResult(connect);
    // Errors are ignored here: the load itself will meet and report them.
    const auto stream = gobject::GObjectPointer<GIOStream>::adopt(
        G_IO_STREAM(g_socket_client_connect_to_uri_finish(client.get(), connected.get(), nullptr)));
    if (!stream)
        co_return;
    const auto connection = connectionWithoutTrust(stream.get(), probe->url);
    if (!connection)
        co_return;
    probe->certificateHandler = gobject::connectSignal(connection.get(), "accept-certificate",
                                                       acceptCertificate, probe.get());
    const auto shakeHands = [&connection](GAsyncReadyCallback ready, gpointer data) {
        g_tls_connection_handshake_async(connection.get(), G_PRIORITY_DEFAULT, nullptr, ready,
                                         data);
    };
    const auto shaken = co_await gobject::asyncResult(shakeHands);
    g_tls_connection_handshake_finish(connection.get(), shaken.get(), nullptr);
}

} // namespace

CertificateProbe::CertificateProbe(gobject::GObjectPointer<WebKitNetworkSession> session,
                                   std::shared_ptr<const http::TrustedAuthority> authority)
    : session(std::move(session)), authority(std::move(authority)) {}

void CertificateProbe::start(const Url& url) {
    const std::string origin = url.host() + ":" + std::to_string(url.port().value_or(0));
    if (url.scheme() != "https" || !authority->vouchesFor(url) ||
        !probedOrigins.insert(origin).second)
        return;
    spawn(run(std::make_shared<Probe>(Probe{session, authority, url})));
}

} // namespace kelo::webkit
