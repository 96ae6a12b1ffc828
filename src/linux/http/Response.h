#pragma once

#include "base/Bytes.h"
#include "base/async/Task.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/Deadline.h"
#include "linux/http/TrustedAuthority.h"
#include "platform/UrlRequest.h"

#include <libsoup/soup.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kelo::http {

class ChunkedBody;
class Exchange;

/// A response whose head has arrived. Its body is read from the connection piece by piece.
class Response {
public:
    Response(gobject::GObjectPointer<SoupMessage> message,
             gobject::GObjectPointer<GInputStream> stream, std::shared_ptr<Exchange> exchange,
             platform::UrlRequest request, const Deadline& deadline);
    ~Response();
    Response(const Response&) = delete;
    Response& operator=(const Response&) = delete;

    int status() const;
    std::optional<std::string> location() const;
    /// The Content-Length; empty if the server sent none.
    std::optional<std::uint64_t> announcedLength() const;

    /// The next bytes of the body; empty at its proper end. Throws a Failure if the body is cut
    /// short or malformed.
    Task<Bytes> read();

private:
    Bytes decoded(GBytes* bytes);

    gobject::GObjectPointer<SoupMessage> message;
    gobject::GObjectPointer<GInputStream> stream;
    std::shared_ptr<Exchange> exchange;
    platform::UrlRequest request;
    const Deadline& deadline;
    GInputStream* source; ///< the stream, or the connection below it
    std::unique_ptr<ChunkedBody> chunks;
    bool finished = false;
};

/// A session for sendRequest(). It decodes nothing, because lengths and signatures refer to the
/// bytes on the wire, and asks nobody for a password. Many front ends of services turn away
/// requests that do not say which program sends them, so a User-Agent names this one and its
/// version. proxies: null for the desktop's.
gobject::GObjectPointer<SoupSession> makeSoupSession(GProxyResolver* proxies = nullptr);

/// Sends one request and waits for the head of the response. Speaks HTTP/1.1 alone. Does
/// not follow redirects. Throws a Failure. Cookies are judged by the site of firstUrl, where the
/// chain of redirects began. The deadline must outlive the task and the response.
Task<std::unique_ptr<Response>> sendRequest(gobject::GObjectPointer<SoupSession> session,
                                            std::shared_ptr<const TrustedAuthority> authority,
                                            platform::UrlRequest request, Url firstUrl,
                                            const Deadline& deadline);

} // namespace kelo::http
