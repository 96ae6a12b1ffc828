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

void connectionEvent(GSocketClient*, GSocketClientEvent event, GSocketConnectable*,
                     GIOStream* connection, SharedProbe* probe) {
    if (event != G_SOCKET_CLIENT_TLS_HANDSHAKING)
        return;
    // Without a trust store every certificate is reported. The engine itself accepts those that the
    // system trusts.
    g_tls_connection_set_database(G_TLS_CONNECTION(connection), nullptr);
    (*probe)->certificateHandler =
        gobject::connectSignal(connection, "accept-certificate", acceptCertificate, probe->get());
}

Task<void> run(SharedProbe probe) {
    const ProbeScope scope{probe};
    constexpr guint seconds = 10;
    const auto client = gobject::GObjectPointer<GSocketClient>::adopt(g_socket_client_new());
    g_socket_client_set_tls(client.get(), TRUE);
    g_socket_client_set_timeout(client.get(), seconds);
    gobject::connectWithState(client.get(), "event", connectionEvent, probe);
    const auto start = [&client, &probe](GAsyncReadyCallback ready, gpointer data) {
        g_socket_client_connect_to_uri_async(client.get(), probe->url.absoluteString().c_str(), 443,
                                             nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    // An error is ignored here: the load itself will meet and report it.
    const auto connection = gobject::GObjectPointer<GSocketConnection>::adopt(
        g_socket_client_connect_to_uri_finish(client.get(), result.get(), nullptr));
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
