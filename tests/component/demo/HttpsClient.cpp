#include "HttpsClient.h"

#include <memory>
#include <stdexcept>

namespace kelo::demo {
namespace {

using gobject::GErrorPointer;
using gobject::GObjectPointer;
using gobject::GText;

struct BytesRelease {
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
};
using BytesPointer = std::unique_ptr<GBytes, BytesRelease>;

void fail(const GErrorPointer& error) {
    if (error)
        throw std::runtime_error(error->message);
}

} // namespace

std::string Response::header(const std::string& name) const {
    for (const auto& [candidate, value] : headers) {
        if (candidate == name)
            return value;
    }
    return {};
}

std::string Response::setCookie(const std::string& name) const {
    for (const auto& [candidate, value] : headers) {
        if (candidate == "set-cookie" && value.starts_with(name + "="))
            return value;
    }
    return {};
}

HttpsClient::HttpsClient(const std::filesystem::path& authority, std::string origin)
    : origin(std::move(origin)),
      session(GObjectPointer<SoupSession>::adopt(soup_session_new_with_options(nullptr, nullptr))) {
    GError* error = nullptr;
    const auto database = GObjectPointer<GTlsDatabase>::adopt(
        g_tls_file_database_new((authority / "ca.pem").c_str(), &error));
    fail(GErrorPointer(error));
    soup_session_set_tls_database(session.get(), database.get());
}

Response HttpsClient::get(const std::string& path, const Headers& headers) {
    return send("GET", path, "", "", headers);
}

Response HttpsClient::post(const std::string& path, const std::string& type,
                           const std::string& body, const Headers& headers) {
    return send("POST", path, type, body, headers);
}

Response HttpsClient::postForm(const std::string& path,
                               const std::map<std::string, std::string>& fields,
                               const Headers& headers) {
    std::string body;
    for (const auto& [name, value] : fields) {
        const GText escaped(g_uri_escape_string(value.c_str(), nullptr, FALSE));
        body += (body.empty() ? "" : "&") + name + "=" + escaped.get();
    }
    return post(path, "application/x-www-form-urlencoded", body, headers);
}

Response HttpsClient::send(const std::string& method, const std::string& path,
                           const std::string& type, const std::string& body,
                           const Headers& headers) {
    const auto message = GObjectPointer<SoupMessage>::adopt(
        soup_message_new(method.c_str(), (origin + path).c_str()));
    soup_message_add_flags(message.get(), SOUP_MESSAGE_NO_REDIRECT);
    auto* requestHeaders = soup_message_get_request_headers(message.get());
    std::string cookieLine;
    for (const auto& [name, value] : cookies)
        cookieLine += (cookieLine.empty() ? "" : "; ") + name + "=" + value;
    if (!cookieLine.empty())
        soup_message_headers_replace(requestHeaders, "Cookie", cookieLine.c_str());
    for (const auto& [name, value] : headers)
        soup_message_headers_replace(requestHeaders, name.c_str(), value.c_str());
    if (!type.empty()) {
        const BytesPointer bytes(g_bytes_new(body.data(), body.size()));
        soup_message_set_request_body_from_bytes(message.get(), type.c_str(), bytes.get());
    }

    GError* error = nullptr;
    const BytesPointer reply(
        soup_session_send_and_read(session.get(), message.get(), nullptr, &error));
    fail(GErrorPointer(error));
    Response response;
    response.status = soup_message_get_status(message.get());
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(reply.get(), &size));
    if (size > 0)
        response.body.assign(data, size);
    const auto collect = [](const char* name, const char* value, gpointer target) {
        const GText lower(g_ascii_strdown(name, -1));
        static_cast<Response*>(target)->headers.emplace_back(lower.get(), value);
    };
    soup_message_headers_foreach(soup_message_get_response_headers(message.get()), collect,
                                 &response);
    keepCookies(response);
    return response;
}

void HttpsClient::keepCookies(const Response& response) {
    for (const auto& [name, value] : response.headers) {
        if (name != "set-cookie")
            continue;
        const auto equals = value.find('=');
        const auto cookie = value.substr(0, equals);
        if (value.find("Max-Age=0") != std::string::npos)
            cookies.erase(cookie);
        else
            cookies[cookie] = value.substr(equals + 1, value.find(';') - equals - 1);
    }
}

} // namespace kelo::demo
