#pragma once

#include "base/Bytes.h"
#include "base/async/Task.h"
#include "platform/CookieStore.h"
#include "platform/UrlRequest.h"

#include <optional>
#include <vector>

namespace kelo::platform {

struct HttpReply {
    Bytes body;
    /// Empty when the reply did not come over HTTP.
    std::optional<int> status;
    /// Whether a redirect on the way led to another origin, even if a later one led back.
    bool changedOrigin = false;
};

/// The cookies of a session.
class HttpCookieStorage {
public:
    virtual ~HttpCookieStorage() = default;
    /// The cookies that a request for the URL would carry; empty when the store cannot tell.
    virtual std::optional<std::vector<HttpCookie>> cookies(const Url& url) const = 0;
};

/// Sends requests. Main thread only. A session must outlive its requests.
///
/// Redirects are followed. A redirect to another origin drops the body and every header that the
/// caller set, so that a "Cookie" header or a token never reaches another origin.
class HttpSession {
public:
    virtual ~HttpSession() = default;

    /// The complete reply, whatever its status. Throws a Failure if there is no connection, the
    /// certificate is refused, the reply is not complete within the request's timeout, or the reply
    /// is cut short or longer than 1 MiB.
    virtual Task<HttpReply> data(UrlRequest request) = 0;

    /// A GET with the default timeout and cache policy.
    virtual Task<HttpReply> data(Url url) = 0;

    /// Null for a session without cookies.
    virtual const HttpCookieStorage* cookieStorage() const = 0;
};

} // namespace kelo::platform
