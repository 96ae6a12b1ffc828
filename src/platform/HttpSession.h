#pragma once

#include "base/Bytes.h"
#include "base/async/Task.h"
#include "platform/HttpCookie.h"
#include "platform/UrlRequest.h"

#include <optional>
#include <vector>

namespace kelo::platform {

struct HttpReply {
    Bytes body;
    /// Nothing when the reply did not come over HTTP.
    std::optional<int> status;
};

/// The cookies of a session.
class HttpCookieStorage {
public:
    virtual ~HttpCookieStorage() = default;
    /// Those that a request for the URL would carry; nothing when the store gives no answer.
    virtual std::optional<std::vector<HttpCookie>> cookies(const Url& url) const = 0;
};

/// Sends requests. Main thread only; a session outlives its requests.
///
/// Redirects within the origin of the request are followed. Across origins they are followed
/// without the headers and body that were set by hand, so that a "Cookie" header or a token never
/// reaches another origin.
class HttpSession {
public:
    virtual ~HttpSession() = default;

    /// The whole reply, whatever its status. Fails with a Failure when there is none: no
    /// connection, no complete reply within the request's timeout, a certificate that does not
    /// hold, a reply that is cut short or longer than 16 MiB.
    virtual Task<HttpReply> data(UrlRequest request) = 0;

    /// A plain GET with the session's own time-out and policy.
    virtual Task<HttpReply> data(Url url) = 0;

    /// Null for a session without one.
    virtual const HttpCookieStorage* cookieStorage() const = 0;
};

} // namespace kelo::platform
