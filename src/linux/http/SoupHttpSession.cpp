#include "linux/http/SoupHttpSession.h"

#include "base/Failure.h"
#include "linux/http/HttpExchange.h"
#include "linux/http/Redirect.h"

namespace kelo::http {

using platform::HttpReply;
using platform::UrlRequest;

namespace {

Task<HttpReply> perform(gobject::GObjectPointer<SoupSession> session,
                        std::shared_ptr<const TrustedAuthority> authority, UrlRequest request) {
    const Deadline deadline(request.timeout);
    const Url firstUrl = request.url;
    for (int hop = 0; hop <= redirectLimit; ++hop) {
        ExchangeReply reply = co_await exchange(session, authority, request, firstUrl, deadline);
        std::optional<UrlRequest> next = redirected(request, reply.status, reply.location);
        if (!next) {
            HttpReply result;
            result.body = std::move(reply.body);
            result.status = reply.status;
            co_return result;
        }
        request = std::move(*next);
    }
    throw Failure(FailureKind::badReply, firstUrl.host() +
                                             " sent Kelo from one address to the next "
                                             "without end. Try again later.");
}

} // namespace

SoupHttpSession::SoupHttpSession(Cookies cookies, std::shared_ptr<const TrustedAuthority> authority)
    : session(gobject::GObjectPointer<SoupSession>::adopt(soup_session_new())),
      authority(std::move(authority)) {
    // Both would put headers on the wire that nobody asked for.
    soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_CONTENT_DECODER);
    soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_AUTH_MANAGER);
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
