#include "linux/webkit/CertificateProbe.h"

#include "base/async/Spawn.h"
#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/SignalHandler.h"

namespace kelo::webkit {

namespace {

struct Look {
    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<const http::TrustedAuthority> authority;
    Url url;
    gobject::GObjectPointer<GObject> connection = {};
    gulong handler = 0;

    // GIO may let go of the connection on a thread of its own, so our handler goes before, on this.
    void end() {
        if (connection)
            g_signal_handler_disconnect(connection.get(), handler);
        connection = {};
    }
};
using SharedLook = std::shared_ptr<Look>;

/// Ends the look when its flow ends or is dropped.
struct LookScope {
    SharedLook look;
    ~LookScope() { look->end(); }
};

// Asked about every certificate, because the connection has no trust store. The answer is always
// no: all there is to learn has been learned, and the connection may end here.
gboolean acceptCertificate(GTlsConnection*, GTlsCertificate* certificate, GTlsCertificateFlags,
                           SharedLook* shared) {
    const Look& look = **shared;
    if (look.authority->accepts(certificate, look.url))
        webkit_network_session_allow_tls_certificate_for_host(look.session.get(), certificate,
                                                              look.url.host().c_str());
    return FALSE;
}

void connectionEvent(GSocketClient*, GSocketClientEvent event, GSocketConnectable*,
                     GIOStream* connection, SharedLook* look) {
    if (event != G_SOCKET_CLIENT_TLS_HANDSHAKING)
        return;
    // Without a trust store nothing is vouched for here: what the system trusts, the engine accepts
    // by itself.
    g_tls_connection_set_database(G_TLS_CONNECTION(connection), nullptr);
    (*look)->end();
    (*look)->connection = gobject::GObjectPointer<GObject>::share(G_OBJECT(connection));
    (*look)->handler =
        gobject::connectWithState(connection, "accept-certificate", acceptCertificate, *look);
}

Task<void> lookAt(SharedLook look) {
    const LookScope scope{look};
    constexpr guint seconds = 10;
    const auto client = gobject::GObjectPointer<GSocketClient>::adopt(g_socket_client_new());
    g_socket_client_set_tls(client.get(), TRUE);
    g_socket_client_set_timeout(client.get(), seconds);
    gobject::connectWithState(client.get(), "event", connectionEvent, look);
    const auto start = [&client, &look](GAsyncReadyCallback ready, gpointer data) {
        g_socket_client_connect_to_uri_async(client.get(), look->url.absoluteString().c_str(), 443,
                                             nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    // Whatever is wrong with the host, the load itself will say.
    const auto connection = gobject::GObjectPointer<GSocketConnection>::adopt(
        g_socket_client_connect_to_uri_finish(client.get(), result.get(), nullptr));
}

} // namespace

CertificateProbe::CertificateProbe(gobject::GObjectPointer<WebKitNetworkSession> session,
                                   std::shared_ptr<const http::TrustedAuthority> authority)
    : session(std::move(session)), authority(std::move(authority)) {}

void CertificateProbe::start(const Url& url) {
    const std::string origin = url.host() + ":" + std::to_string(url.port().value_or(0));
    if (url.scheme() != "https" || authority->isEmpty() || !looked.insert(origin).second)
        return;
    const auto look = std::make_shared<Look>(Look{session, authority, url});
    spawn(lookAt(look));
}

} // namespace kelo::webkit
