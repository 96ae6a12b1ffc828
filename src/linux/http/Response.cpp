#include "linux/http/Response.h"

#include "base/Translation.h"
#include "deployment/Deployment.h"
#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/http/ChunkedBody.h"
#include "linux/http/CookiePrefix.h"
#include "linux/http/Exchange.h"
#include "linux/http/ProxyName.h"
#include "linux/http/SoupUri.h"
#include "linux/http/TransportErrors.h"

#include <algorithm>
#include <utility>

namespace kelo::http {

using platform::UrlRequest;

namespace {

using gobject::GBytesPointer;

// The library keeps the bytes for as long as it needs them. This copy wipes itself afterwards.
GBytesPointer bytesOf(const platform::RequestBody& body) {
    auto copy = std::make_unique<platform::RequestBody>(body);
    const auto* data = copy->data();
    const gsize size = copy->size();
    const auto drop = [](gpointer owned) {
        std::unique_ptr<platform::RequestBody>(static_cast<platform::RequestBody*>(owned));
    };
    return GBytesPointer(g_bytes_new_with_free_func(data, size, drop, copy.release()));
}

bool fitsInHeader(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7f; });
}

/// The domain below the public suffix; the host itself if it has none, as an address has.
std::string siteOf(const Url& url) {
    const char* const domain = soup_tld_get_base_domain(url.host().c_str(), nullptr);
    return domain ? domain : url.host();
}

gobject::GObjectPointer<SoupMessage> messageFor(const UrlRequest& request, const Url& firstUrl) {
    const SoupUri uri = soupUri(request.url);
    const SoupUri first = soupUri(firstUrl);
    if (!uri || !first || request.url.scheme() != "https")
        throw Failure(FailureKind::insecure,
                      translated("Could not connect to %1: its address is not a secure one.",
                                 {request.url.host()}),
                      request.url.absoluteString());

    auto message = gobject::GObjectPointer<SoupMessage>::adopt(
        soup_message_new_from_uri(request.method.c_str(), uri.get()));
    soup_message_add_flags(message.get(), SOUP_MESSAGE_NO_REDIRECT);
    // What libsoup compares is the cookie's domain with one host, so that it holds back even a
    // host's own cookies where they name a domain. Without a site it sends every cookie that
    // applies.
    if (siteOf(request.url) != siteOf(firstUrl)) {
        soup_message_set_site_for_cookies(message.get(), first.get());
        soup_message_set_first_party(message.get(), first.get());
    }
    if (request.body) {
        const GBytesPointer body = bytesOf(*request.body);
        soup_message_set_request_body_from_bytes(message.get(), nullptr, body.get());
    }
    SoupMessageHeaders* const headers = soup_message_get_request_headers(message.get());
    for (const auto& [name, value] : request.headers) {
        // Values come from cookies and replies. A line break in a value would add a header.
        if (!fitsInHeader(name) || !fitsInHeader(value))
            throw Failure(FailureKind::badReply,
                          translated("The request to %1 was not sent, because the service handed "
                                     "out a value that no request can carry. Try again later.",
                                     {request.url.host()}),
                          "control character in header " + name);
        soup_message_headers_append(headers, name.c_str(), value.c_str());
    }
    // A request that does not say so accepts every coding, and none is decoded here.
    soup_message_headers_replace(headers, "Accept-Encoding", "identity");
    return message;
}

// The library accepts a chunked body that breaks off between two chunks, and takes a malformed
// chunk size for the last chunk. So a chunked body is read from the connection below the library's
// decoder. The price is that such a connection is not reused. Null for a body without chunks.
GInputStream* connectionBelow(SoupMessage* message, GInputStream* body) {
    SoupMessageHeaders* const headers = soup_message_get_response_headers(message);
    const guint status = soup_message_get_status(message);
    const bool noBody = status == SOUP_STATUS_NO_CONTENT || status == SOUP_STATUS_NOT_MODIFIED ||
                        g_str_equal(soup_message_get_method(message), SOUP_METHOD_HEAD);
    if (noBody || soup_message_get_http_version(message) > SOUP_HTTP_1_1 ||
        soup_message_headers_get_encoding(headers) != SOUP_ENCODING_CHUNKED)
        return nullptr;
    GInputStream* stream = body;
    for (int layer = 0; layer < 2 && stream; ++layer)
        stream = G_IS_FILTER_INPUT_STREAM(stream)
                     ? g_filter_input_stream_get_base_stream(G_FILTER_INPUT_STREAM(stream))
                     : nullptr;
    return stream;
}

} // namespace

Response::Response(gobject::GObjectPointer<SoupMessage> message,
                   gobject::GObjectPointer<GInputStream> stream, std::shared_ptr<Exchange> exchange,
                   UrlRequest request, const Deadline& deadline)
    : message(std::move(message)),
      stream(std::move(stream)),
      exchange(std::move(exchange)),
      request(std::move(request)),
      deadline(deadline),
      source(this->stream.get()) {
    if (GInputStream* const connection = connectionBelow(this->message.get(), this->stream.get())) {
        source = connection;
        chunks = std::make_unique<ChunkedBody>();
    }
}

Response::~Response() = default;

int Response::status() const {
    return static_cast<int>(soup_message_get_status(message.get()));
}

std::optional<std::string> Response::location() const {
    const char* const location =
        soup_message_headers_get_one(soup_message_get_response_headers(message.get()), "Location");
    return location ? std::optional<std::string>(location) : std::nullopt;
}

std::optional<std::uint64_t> Response::announcedLength() const {
    SoupMessageHeaders* const headers = soup_message_get_response_headers(message.get());
    if (soup_message_headers_get_encoding(headers) != SOUP_ENCODING_CONTENT_LENGTH)
        return std::nullopt;
    return static_cast<std::uint64_t>(soup_message_headers_get_content_length(headers));
}

Task<Bytes> Response::read() {
    Bytes portion;
    // The bytes of a chunked body may hold framing only.
    while (portion.empty() && !finished) {
        const auto read = [source = source, cancellable = deadline.cancellable()](
                              GAsyncReadyCallback ready, gpointer data) {
            constexpr gsize most = 64 * 1024;
            g_input_stream_read_bytes_async(source, most, G_PRIORITY_DEFAULT, cancellable, ready,
                                            data);
        };
        const auto result = co_await gobject::asyncResult(read);
        GError* error = nullptr;
        const GBytesPointer bytes(g_input_stream_read_bytes_finish(source, result.get(), &error));
        if (const gobject::GErrorPointer failure(error); failure)
            throw exchange->failure(*failure, deadline);
        portion = decoded(bytes.get());
    }
    co_return portion;
}

Bytes Response::decoded(GBytes* bytes) {
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    if (!chunks) {
        finished = size == 0;
        return Bytes(data, data + size);
    }
    if (size == 0)
        throw replyBrokenOffError(request.url);
    Bytes body;
    const ChunkedBody::State state = chunks->take({data, size}, body);
    if (state == ChunkedBody::State::malformed)
        throw unreadableReplyError(request.url);
    finished = state == ChunkedBody::State::finished;
    return body;
}

gobject::GObjectPointer<SoupSession> makeSoupSession(GProxyResolver* proxies) {
    auto session = gobject::GObjectPointer<SoupSession>::adopt(soup_session_new());
    soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_CONTENT_DECODER);
    soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_AUTH_MANAGER);
    soup_session_set_user_agent(session.get(), std::string(deployment::userAgent).c_str());
    if (proxies)
        soup_session_set_proxy_resolver(session.get(), proxies);
    return session;
}

Task<std::unique_ptr<Response>> sendRequest(gobject::GObjectPointer<SoupSession> session,
                                            std::shared_ptr<const TrustedAuthority> authority,
                                            UrlRequest request, Url firstUrl,
                                            const Deadline& deadline) {
    const gobject::GObjectPointer<SoupMessage> message = messageFor(request, firstUrl);
    GCancellable* const cancellable = deadline.cancellable();
    const auto exchange = Exchange::follow(message.get(), std::move(authority), request, deadline);
    // Connected before the library's own cookie jar reads the headers.
    gobject::connectWithState(
        message.get(), "got-headers",
        +[](SoupMessage* received, std::shared_ptr<const Url>* url) {
            dropFalseCookies(soup_message_get_response_headers(received), **url);
        },
        std::make_shared<const Url>(request.url));

    const auto send = [session = session.get(), message = message.get(),
                       cancellable](GAsyncReadyCallback ready, gpointer data) {
        soup_session_send_async(session, message, G_PRIORITY_DEFAULT, cancellable, ready, data);
    };
    const auto sent = co_await gobject::asyncResult(send);
    GError* error = nullptr;
    const auto stream = gobject::GObjectPointer<GInputStream>::adopt(
        soup_session_send_finish(session.get(), sent.get(), &error));
    if (const gobject::GErrorPointer failure(error); failure) {
        if (exchange->mayLackProxy(*failure))
            exchange->setProxy(
                co_await proxyFor(gobject::GObjectPointer<GProxyResolver>::share(
                                      soup_session_get_proxy_resolver(session.get())),
                                  request.url, cancellable));
        throw exchange->failure(*failure, deadline);
    }
    // The library passes the status of a proxy that refused off as the server's.
    if (!exchange->hasReachedServer())
        throw exchange->proxyRefusal(static_cast<int>(soup_message_get_status(message.get())));
    exchange->replyHasBegun();
    co_return std::make_unique<Response>(message, stream, exchange, std::move(request), deadline);
}

} // namespace kelo::http
