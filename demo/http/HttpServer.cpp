#include "demo/http/HttpServer.h"

#include "demo/base/ServiceError.h"

#include <exception>
#include <memory>
#include <string>

namespace kelo::demo {
namespace {

struct BytesRelease {
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
};

struct UriListRelease {
    void operator()(GSList* list) const {
        g_slist_free_full(list, [](gpointer uri) { g_uri_unref(static_cast<GUri*>(uri)); });
    }
};

/// Whoever keeps sending after being told that it is too much is cut off.
constexpr std::size_t patience = 1024 * 1024;

struct BodyCounter {
    std::size_t size = 0;
};

void send(SoupServerMessage* message, const Reply& reply) {
    soup_server_message_set_status(message, reply.status, nullptr);
    auto* headers = soup_server_message_get_response_headers(message);
    for (const auto& [name, value] : reply.headers)
        soup_message_headers_append(headers, name.c_str(), value.c_str());
    soup_server_message_set_response(message, reply.contentType.c_str(), SOUP_MEMORY_COPY,
                                     reply.body.data(), reply.body.size());
}

void refuseBody(SoupServerMessage* message) {
    if (soup_server_message_get_status(message) != 0)
        return; // refused already
    soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    Reply reply{413, "application/json", R"({"reason":"The request is too large"})", {}};
    send(message, reply.with("Cache-Control", "no-store").with("Connection", "close"));
}

void onChunk(SoupServerMessage* message, GBytes* chunk, gpointer data) {
    auto& counter = *static_cast<BodyCounter*>(data);
    counter.size += g_bytes_get_size(chunk);
    if (counter.size > HttpServer::largestBody)
        refuseBody(message);
    if (counter.size > patience)
        g_socket_shutdown(soup_server_message_get_socket(message), TRUE, TRUE, nullptr);
}

gobject::GObjectPointer<GTlsCertificate> loadCertificate(const AuthorityFiles& files) {
    GError* error = nullptr;
    auto certificate =
        gobject::GObjectPointer<GTlsCertificate>::adopt(g_tls_certificate_new_from_files(
            files.serverCertificate.c_str(), files.serverKey.c_str(), &error));
    const gobject::GErrorPointer errorOwner(error);
    if (!certificate)
        throw ServiceError("Could not load the server certificate from " +
                           files.directory.string() + ": " + error->message + ".");
    return certificate;
}

std::uint16_t listen(SoupServer* server, std::uint16_t port) {
    GError* error = nullptr;
    const bool listening = soup_server_listen_local(server, port, SOUP_SERVER_LISTEN_HTTPS, &error);
    const gobject::GErrorPointer errorOwner(error);
    if (!listening && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE))
        throw ServiceError("Port " + std::to_string(port) +
                           " is taken by another program. End it, or choose another with --port.");
    if (!listening)
        throw ServiceError("Could not listen on port " + std::to_string(port) + ": " +
                           error->message + ".");
    const std::unique_ptr<GSList, UriListRelease> uris(soup_server_get_uris(server));
    return static_cast<std::uint16_t>(g_uri_get_port(static_cast<GUri*>(uris->data)));
}

Request requestFrom(SoupServerMessage* message, const char* path) {
    Request request;
    request.method = soup_server_message_get_method(message);
    if (request.method == "HEAD")
        request.method = "GET";
    request.path = path;
    if (const char* query = g_uri_get_query(soup_server_message_get_uri(message)))
        request.query = query;
    const auto collect = [](const char* name, const char* value, gpointer data) {
        const gobject::GText lower(g_ascii_strdown(name, -1));
        static_cast<Request*>(data)->headers.emplace_back(lower.get(), value);
    };
    soup_message_headers_foreach(soup_server_message_get_request_headers(message), collect,
                                 &request);
    const std::unique_ptr<GBytes, BytesRelease> body(
        soup_message_body_flatten(soup_server_message_get_request_body(message)));
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(body.get(), &size));
    if (size > 0)
        request.body.assign(data, size);
    return request;
}

} // namespace

HttpServer::HttpServer(const AuthorityFiles& files, std::uint16_t port) {
    const auto certificate = loadCertificate(files);
    server = gobject::GObjectPointer<SoupServer>::adopt(
        soup_server_new("tls-certificate", certificate.get(), nullptr));
    soup_server_add_early_handler(server.get(), nullptr, onHeaders, this, nullptr);
    soup_server_add_handler(server.get(), nullptr, onRequest, this, nullptr);
    listeningPort = listen(server.get(), port);
}

HttpServer::~HttpServer() {
    if (server)
        soup_server_disconnect(server.get());
}

void HttpServer::onHeaders(SoupServer*, SoupServerMessage* message, const char*, GHashTable*,
                           gpointer self) {
    if (const auto& times = static_cast<const HttpServer*>(self)->times)
        times->follow(message);
    auto* headers = soup_server_message_get_request_headers(message);
    const bool sized = soup_message_headers_get_encoding(headers) == SOUP_ENCODING_CONTENT_LENGTH;
    if (sized &&
        soup_message_headers_get_content_length(headers) > static_cast<goffset>(largestBody))
        refuseBody(message);
    auto counter = std::make_unique<BodyCounter>();
    g_signal_connect_data(
        message, "got-chunk", G_CALLBACK(onChunk), counter.release(),
        [](gpointer data, GClosure*) {
            std::unique_ptr<BodyCounter>(static_cast<BodyCounter*>(data));
        },
        static_cast<GConnectFlags>(0));
}

void HttpServer::onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                           gpointer self) {
    if (soup_server_message_get_status(message) != 0)
        return; // refused by its headers or its size
    try {
        static_cast<const HttpServer*>(self)->answer(message, path);
    } catch (const std::exception& error) {
        g_warning("A request for %s failed: %s", path, error.what());
        Reply reply{500, "text/plain; charset=utf-8", "The service could not answer.\n", {}};
        send(message, reply.with("Cache-Control", "no-store"));
    }
}

void HttpServer::answer(SoupServerMessage* message, const char* path) const {
    if (handler)
        send(message, handler(requestFrom(message, path)));
    else
        soup_server_message_set_status(message, SOUP_STATUS_SERVICE_UNAVAILABLE, nullptr);
}

} // namespace kelo::demo
