#include "testing/rig/DownloadServer.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace kelo::rig {

namespace {

void require(bool success, GError* error) {
    const gobject::GErrorPointer owned(error);
    if (!success)
        throw std::runtime_error("The server for downloads cannot be started: " +
                                 std::string(error ? error->message : "unknown error"));
}

gobject::GObjectPointer<SoupServer> makeServer(const std::filesystem::path& authority) {
    GError* error = nullptr;
    const auto certificate =
        gobject::GObjectPointer<GTlsCertificate>::adopt(g_tls_certificate_new_from_files(
            (authority / "server.pem").c_str(), (authority / "server-key.pem").c_str(), &error));
    require(certificate.get() != nullptr, error);
    return gobject::GObjectPointer<SoupServer>::adopt(
        soup_server_new("tls-certificate", certificate.get(), nullptr));
}

void append(SoupServerMessage& message, std::string_view bytes) {
    soup_message_body_append(soup_server_message_get_response_body(&message), SOUP_MEMORY_COPY,
                             bytes.data(), bytes.size());
}

} // namespace

DownloadServer::DownloadServer(const std::filesystem::path& authority, std::filesystem::path folder)
    : folder(std::move(folder)), server(makeServer(authority)) {
    soup_server_add_handler(
        server.get(), nullptr,
        +[](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
            static_cast<DownloadServer*>(self)->answer(*message);
        },
        this, nullptr);
    GError* error = nullptr;
    const bool listens =
        soup_server_listen_local(server.get(), 0, SOUP_SERVER_LISTEN_HTTPS, &error);
    require(listens, error);
}

DownloadServer::~DownloadServer() {
    soup_server_disconnect(server.get());
}

std::string DownloadServer::origin() const {
    GSList* const addresses = soup_server_get_uris(server.get());
    const int port = addresses ? g_uri_get_port(static_cast<GUri*>(addresses->data)) : 0;
    g_slist_free_full(addresses, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    return "https://localhost:" + std::to_string(port);
}

void DownloadServer::answer(SoupServerMessage& message) {
    const std::string path = g_uri_get_path(soup_server_message_get_uri(&message));
    received.push_back(path);
    // Just the name, so that nothing outside of the folder is ever served.
    std::ifstream file(folder / std::filesystem::path(path).filename(), std::ios::binary);
    if (!file) {
        soup_server_message_set_status(&message, SOUP_STATUS_NOT_FOUND, nullptr);
        return;
    }
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    soup_server_message_set_status(&message, SOUP_STATUS_OK, nullptr);
    soup_message_headers_set_content_length(soup_server_message_get_response_headers(&message),
                                            static_cast<goffset>(bytes.size()));
    const std::size_t first = holds ? bytes.size() / 2 : bytes.size();
    append(message, std::string_view(bytes).substr(0, first));
    if (holds)
        held.push_back(
            {gobject::GObjectPointer<SoupServerMessage>::share(&message), bytes.substr(first)});
}

void DownloadServer::letGo() {
    holds = false;
    for (auto& [message, rest] : std::exchange(held, {})) {
        append(*message.get(), rest);
        soup_server_message_unpause(message.get());
    }
}

} // namespace kelo::rig
