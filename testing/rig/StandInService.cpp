#include "testing/rig/StandInService.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kelo::rig {

namespace {

void require(bool success, GError* error) {
    const gobject::GErrorPointer owned(error);
    if (!success)
        throw std::runtime_error("The stand-in for the service cannot be started: " +
                                 std::string(error ? error->message : "unknown error"));
}

gobject::GObjectPointer<SoupServer> makeServer(GTlsCertificate* certificate) {
    return gobject::GObjectPointer<SoupServer>::adopt(
        soup_server_new("tls-certificate", certificate, nullptr));
}

gobject::GObjectPointer<GTlsCertificate> certificateIn(const std::filesystem::path& authority) {
    GError* error = nullptr;
    auto certificate =
        gobject::GObjectPointer<GTlsCertificate>::adopt(g_tls_certificate_new_from_files(
            (authority / "server.pem").c_str(), (authority / "server-key.pem").c_str(), &error));
    require(certificate.get() != nullptr, error);
    return certificate;
}

void beginFile(SoupServerMessage& message, const std::string& name) {
    constexpr std::size_t length = 64 * 1024;
    static const std::string beginning(length, 'x');
    soup_server_message_set_status(&message, SOUP_STATUS_OK, nullptr);
    SoupMessageHeaders* const headers = soup_server_message_get_response_headers(&message);
    soup_message_headers_set_content_type(headers, "application/pdf", nullptr);
    soup_message_headers_replace(headers, "Content-Disposition",
                                 ("attachment; filename=\"" + name + "\"").c_str());
    // The server waits for more chunks, and none comes.
    soup_message_headers_set_encoding(headers, SOUP_ENCODING_CHUNKED);
    soup_message_body_append(soup_server_message_get_response_body(&message), SOUP_MEMORY_STATIC,
                             beginning.data(), length);
}

} // namespace

StandInService::StandInService(const std::filesystem::path& authority,
                               std::map<std::string, std::string> pages, std::uint16_t port)
    : pages(std::move(pages)), server(makeServer(certificateIn(authority).get())) {
    serve();
    GError* error = nullptr;
    const bool listens =
        soup_server_listen_local(server.get(), port, SOUP_SERVER_LISTEN_HTTPS, &error);
    require(listens, error);
}

StandInService::StandInService(std::map<std::string, std::string> pages)
    : pages(std::move(pages)), server(makeServer(nullptr)) {
    serve();
    GError* error = nullptr;
    const bool listens =
        soup_server_listen_local(server.get(), 0, SOUP_SERVER_LISTEN_IPV4_ONLY, &error);
    require(listens, error);
}

StandInService::~StandInService() {
    soup_server_disconnect(server.get());
}

void StandInService::serve() {
    soup_server_add_handler(
        server.get(), nullptr,
        +[](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
            static_cast<StandInService*>(self)->answer(*message);
        },
        this, nullptr);
}

void StandInService::answer(SoupServerMessage& message) {
    GUri* const address = soup_server_message_get_uri(&message);
    const std::string path = g_uri_get_path(address);
    const char* query = g_uri_get_query(address);
    received.push_back(query ? path + "?" + query : path);
    if (const auto file = endlessFiles.find(path); file != endlessFiles.end()) {
        beginFile(message, file->second);
        return;
    }
    const auto page = pages.find(path);
    const std::string text = page == pages.end() ? std::string() : page->second;
    soup_server_message_set_status(&message, SOUP_STATUS_OK, nullptr);
    soup_server_message_set_response(&message, "text/html; charset=utf-8", SOUP_MEMORY_COPY,
                                     text.data(), text.size());
}

void StandInService::serveEndlessly(const std::string& path, const std::string& fileName) {
    endlessFiles.insert_or_assign(path, fileName);
}

std::string StandInService::origin() const {
    GSList* const addresses = soup_server_get_uris(server.get());
    const int port = addresses ? g_uri_get_port(static_cast<GUri*>(addresses->data)) : 0;
    g_slist_free_full(addresses, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    return "http://127.0.0.1:" + std::to_string(port);
}

bool StandInService::wasAsked(const std::string& target) const {
    return std::ranges::find(received, target) != received.end();
}

} // namespace kelo::rig
