#include "linux/http/SoupHttpSession.h"

#include "base/Failure.h"
#include "linux/http/LoggedAddress.h"
#include "linux/http/Redirect.h"
#include "linux/http/Response.h"
#include "linux/http/TransportErrors.h"

#include <utility>

namespace kelo::http {

using platform::HttpReply;
using platform::UrlRequest;

namespace {

/// Longest body that is accepted. A reply of the service has a few kilobytes; the room above is for
/// long lists of passkeys.
constexpr std::size_t bodyLimit = std::size_t(1024) * 1024;

Task<Bytes> completeBody(Response& response, const Url& url) {
    if (response.announcedLength().value_or(0) > bodyLimit)
        throw replyTooLongError(url);
    Bytes body;
    while (true) {
        const Bytes portion = co_await response.read();
        if (portion.empty())
            co_return body;
        body.insert(body.end(), portion.begin(), portion.end());
        if (body.size() > bodyLimit)
            throw replyTooLongError(url);
    }
}

Task<HttpReply> perform(gobject::GObjectPointer<SoupSession> session,
                        std::shared_ptr<const TrustedAuthority> authority, UrlRequest request) {
    const Deadline deadline(request.timeout);
    const Url firstUrl = request.url;
    bool changedOrigin = false;
    for (int hop = 0; hop <= redirectLimit; ++hop) {
        const auto response = co_await sendRequest(session, authority, request, firstUrl, deadline);
        HttpReply reply;
        reply.status = response->status();
        reply.changedOrigin = changedOrigin;
        g_debug("http: %s %s: %d", request.method.c_str(),
                loggedAddress(request.url.absoluteString().c_str()).c_str(), response->status());
        // The body of a redirect is read as well, so that its connection can be used again.
        reply.body = co_await completeBody(*response, request.url);
        std::optional<UrlRequest> next =
            redirected(request, response->status(), response->location());
        if (!next)
            co_return reply;
        changedOrigin = changedOrigin || !next->url.hasSameOrigin(firstUrl);
        request = std::move(*next);
    }
    throw tooManyRedirects(firstUrl);
}

} // namespace

SoupHttpSession::SoupHttpSession(Cookies cookies, std::shared_ptr<const TrustedAuthority> authority,
                                 GProxyResolver* proxies)
    : session(makeSoupSession(proxies)), authority(std::move(authority)) {
    if (cookies == Cookies::inMemory) {
        storage = std::make_unique<SoupCookieStorage>();
        soup_session_add_feature(session.get(), SOUP_SESSION_FEATURE(storage->jar()));
    }
}

SoupHttpSession::~SoupHttpSession() {
    soup_session_abort(session.get());
}

Task<HttpReply> SoupHttpSession::data(UrlRequest request) {
    return perform(session, authority, std::move(request));
}

Task<HttpReply> SoupHttpSession::data(Url url) {
    UrlRequest request{std::move(url)};
    return perform(session, authority, std::move(request));
}

std::unique_ptr<platform::HttpSession> makeEphemeralHttpSession() {
    return std::make_unique<SoupHttpSession>(SoupHttpSession::Cookies::inMemory,
                                             TrustedAuthority::compiledIn());
}

std::unique_ptr<platform::HttpSession> makeSharedHttpSession() {
    return std::make_unique<SoupHttpSession>(SoupHttpSession::Cookies::none,
                                             TrustedAuthority::compiledIn());
}

} // namespace kelo::http
