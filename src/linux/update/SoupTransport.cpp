#include "linux/update/SoupTransport.h"

#include "base/Failure.h"
#include "base/Translation.h"
#include "linux/http/Deadline.h"
#include "linux/http/Redirect.h"
#include "linux/http/Response.h"
#include "linux/http/TransportErrors.h"

#include <string>
#include <utility>

namespace kelo::update {

using platform::UrlRequest;

namespace {

constexpr int mostRedirects = 5;

/// Bounds a small transfer from a server that sends a byte now and then.
constexpr std::chrono::minutes longestFetch{10};

Failure statusError(const Url& url, int status) {
    const std::string cause = url.absoluteString() + " answered with " + std::to_string(status);
    if (status >= 500)
        return {
            FailureKind::badReply,
            translated("%1 cannot provide updates at the moment. Try again later.", {url.host()}),
            cause};
    return {FailureKind::badReply,
            translated("%1 does not have this update. Try again later, or ask Kelo's publisher.",
                       {url.host()}),
            cause};
}

Failure tooLongError(const Url& url, std::size_t limit) {
    return {FailureKind::badReply,
            translated("%1 sent more than the updater accepts, so the download was stopped. Try "
                       "again later, or ask Kelo's publisher.",
                       {url.host()}),
            url.absoluteString() + " is longer than " + std::to_string(limit) + " bytes"};
}

/// Follows redirects to the response with status 200.
Task<std::unique_ptr<http::Response>>
followToReply(gobject::GObjectPointer<SoupSession> session,
              std::shared_ptr<const http::TrustedAuthority> authority, UrlRequest request,
              http::Deadline& deadline) {
    const Url first = request.url;
    for (int hop = 0; hop <= mostRedirects; ++hop) {
        auto reply = co_await http::sendRequest(session, authority, request, first, deadline);
        deadline.restart();
        std::optional<UrlRequest> next =
            http::redirected(request, reply->status(), reply->location());
        if (!next && reply->status() != 200)
            throw statusError(request.url, reply->status());
        if (!next)
            co_return std::move(reply);
        request = std::move(*next);
    }
    throw Failure(FailureKind::badReply,
                  translated("%1 redirected Kelo too often. Try again later.", {first.host()}));
}

UrlRequest requestFor(Url url, std::chrono::seconds patience) {
    UrlRequest request{std::move(url)};
    request.timeout = patience;
    return request;
}

} // namespace

SoupTransport::SoupTransport(std::shared_ptr<const http::TrustedAuthority> authority,
                             std::chrono::seconds patience)
    : session(http::makeSoupSession()), authority(std::move(authority)), patience(patience) {}

SoupTransport::~SoupTransport() {
    soup_session_abort(session.get());
}

Task<Bytes> SoupTransport::fetch(Url url, std::size_t limit) {
    http::Deadline deadline(patience);
    const auto end = std::chrono::steady_clock::now() + longestFetch;
    const auto reply =
        co_await followToReply(session, authority, requestFor(url, patience), deadline);
    if (reply->announcedLength().value_or(0) > limit)
        throw tooLongError(url, limit);
    Bytes body;
    while (true) {
        const Bytes portion = co_await reply->read();
        if (portion.empty())
            co_return body;
        body.insert(body.end(), portion.begin(), portion.end());
        if (body.size() > limit)
            throw tooLongError(url, limit);
        if (std::chrono::steady_clock::now() > end)
            throw http::timeOutError(url.host(), longestFetch);
        deadline.restart();
    }
}

Task<void> SoupTransport::download(Url url, std::shared_ptr<updater::ByteSink> sink) {
    http::Deadline deadline(patience);
    const auto reply =
        co_await followToReply(session, authority, requestFor(url, patience), deadline);
    if (const auto length = reply->announcedLength())
        sink->announce(*length);
    while (true) {
        Bytes portion = co_await reply->read();
        if (portion.empty())
            co_return;
        co_await sink->take(std::move(portion));
        deadline.restart();
    }
}

} // namespace kelo::update
