#include "linux/http/Response.h"

#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/http/ChunkedBody.h"
#include "linux/http/SoupUri.h"
#include "linux/http/TransportErrors.h"

#include <algorithm>
#include <utility>

namespace kelo::http {

using platform::UrlRequest;

/// What the signals of a message record for the request: why a certificate was refused, and how
/// many interim replies came before the reply.
struct ExchangeNotes {
    std::shared_ptr<const TrustedAuthority> authority;
    Url url;
    gobject::GObjectPointer<GCancellable> cancellable;
    GTlsCertificateFlags refused = static_cast<GTlsCertificateFlags>(0);
    int interimReplies = 0;
};

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

using SharedNotes = std::shared_ptr<ExchangeNotes>;

/// Servers send one or two: "100 Continue", "103 Early Hints".
constexpr int mostInterimReplies = 10;

// Runs only when the system's trust store has refused the chain.
gboolean acceptCertificate(SoupMessage*, GTlsCertificate* certificate,
                           GTlsCertificateFlags systemProblems, SharedNotes* shared) {
    ExchangeNotes& notes = **shared;
    const GTlsCertificateFlags problems = notes.authority->problems(certificate, notes.url);
    const bool ourAuthority = (problems & G_TLS_CERTIFICATE_UNKNOWN_CA) == 0;
    notes.refused = ourAuthority ? problems : systemProblems;
    return problems == 0;
}

// By default the library accepts a connection that ends without a TLS close notification. An
// attacker could then cut short a response that has no Content-Length.
void insistOnProperClose(SoupMessage*, GSocketClientEvent event, GIOStream* connection,
                         SharedNotes*) {
    if (event == G_SOCKET_CLIENT_TLS_HANDSHAKING && G_IS_TLS_CONNECTION(connection))
        g_tls_connection_set_require_close_notify(G_TLS_CONNECTION(connection), TRUE);
}

// The library reads on without a turn of the main loop for as long as interim replies arrive. A
// server that sends nothing else would stop the whole program, and no timer would end it.
void countInterimReply(SoupMessage*, SharedNotes* shared) {
    ExchangeNotes& notes = **shared;
    if (++notes.interimReplies > mostInterimReplies)
        g_cancellable_cancel(notes.cancellable.get());
}

bool fitsInHeader(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7f; });
}

gobject::GObjectPointer<SoupMessage> messageFor(const UrlRequest& request, const Url& firstUrl) {
    const SoupUri uri = soupUri(request.url);
    const SoupUri site = soupUri(firstUrl);
    if (!uri || !site || request.url.scheme() != "https")
        throw Failure(FailureKind::insecure,
                      "Could not connect to " + request.url.host() +
                          ": its address is not a secure one.",
                      request.url.absoluteString());

    auto message = gobject::GObjectPointer<SoupMessage>::adopt(
        soup_message_new_from_uri(request.method.c_str(), uri.get()));
    soup_message_add_flags(message.get(), SOUP_MESSAGE_NO_REDIRECT);
    soup_message_set_site_for_cookies(message.get(), site.get());
    soup_message_set_first_party(message.get(), site.get());
    if (request.body) {
        const GBytesPointer body = bytesOf(*request.body);
        soup_message_set_request_body_from_bytes(message.get(), nullptr, body.get());
    }
    SoupMessageHeaders* const headers = soup_message_get_request_headers(message.get());
    for (const auto& [name, value] : request.headers) {
        // Values come from cookies and replies. A line break in a value would add a header.
        if (!fitsInHeader(name) || !fitsInHeader(value))
            throw Failure(FailureKind::badReply,
                          "The request to " + request.url.host() +
                              " was not sent, because the service handed out a value that "
                              "no request can carry. Try again later.",
                          "control character in header " + name);
        soup_message_headers_append(headers, name.c_str(), value.c_str());
    }
    return message;
}

[[noreturn]] void fail(const GError& error, TransferPhase phase, const ExchangeNotes& notes,
                       const UrlRequest& request, const Deadline& deadline) {
    if (deadline.passed())
        throw timeOutError(request.url, request.timeout);
    if (notes.interimReplies > mostInterimReplies)
        throw unreadableReplyError(request.url, "more interim replies than are read");
    if (notes.refused != 0)
        throw certificateError(notes.refused, request.url);
    throw transportError(error, phase, request.url);
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
                   gobject::GObjectPointer<GInputStream> stream,
                   std::shared_ptr<const ExchangeNotes> notes, UrlRequest request,
                   const Deadline& deadline)
    : message(std::move(message)),
      stream(std::move(stream)),
      notes(std::move(notes)),
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
            fail(*failure, TransferPhase::insideReply, *notes, request, deadline);
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

Task<std::unique_ptr<Response>> sendRequest(gobject::GObjectPointer<SoupSession> session,
                                            std::shared_ptr<const TrustedAuthority> authority,
                                            UrlRequest request, Url firstUrl,
                                            const Deadline& deadline) {
    const gobject::GObjectPointer<SoupMessage> message = messageFor(request, firstUrl);
    GCancellable* const cancellable = deadline.cancellable();
    const auto notes = std::make_shared<ExchangeNotes>(
        ExchangeNotes{std::move(authority), request.url,
                      gobject::GObjectPointer<GCancellable>::share(cancellable)});
    gobject::connectWithState(message.get(), "accept-certificate", acceptCertificate, notes);
    gobject::connectWithState(message.get(), "network-event", insistOnProperClose, notes);
    gobject::connectWithState(message.get(), "got-informational", countInterimReply, notes);

    const auto send = [session = session.get(), message = message.get(),
                       cancellable](GAsyncReadyCallback ready, gpointer data) {
        soup_session_send_async(session, message, G_PRIORITY_DEFAULT, cancellable, ready, data);
    };
    const auto sent = co_await gobject::asyncResult(send);
    GError* error = nullptr;
    const auto stream = gobject::GObjectPointer<GInputStream>::adopt(
        soup_session_send_finish(session.get(), sent.get(), &error));
    if (const gobject::GErrorPointer failure(error); failure)
        fail(*failure, TransferPhase::beforeReply, *notes, request, deadline);
    co_return std::make_unique<Response>(message, stream, notes, std::move(request), deadline);
}

} // namespace kelo::http
