#include "linux/http/HttpExchange.h"

#include "linux/http/OpenReply.h"
#include "linux/http/TransportErrors.h"

#include <utility>

namespace kelo::http {

Task<ExchangeReply> exchange(gobject::GObjectPointer<SoupSession> session,
                             std::shared_ptr<const TrustedAuthority> authority,
                             platform::UrlRequest request, Url firstUrl, const Deadline& deadline) {
    const Url url = request.url;
    const auto open = co_await openReply(std::move(session), std::move(authority),
                                         std::move(request), std::move(firstUrl), deadline);
    if (open->announcedLength().value_or(0) > replyLimit)
        throw replyTooLongError(url);
    ExchangeReply reply;
    reply.status = open->status();
    reply.location = open->location();
    while (true) {
        const Bytes portion = co_await open->read();
        if (portion.empty())
            co_return reply;
        reply.body.insert(reply.body.end(), portion.begin(), portion.end());
        if (reply.body.size() > replyLimit)
            throw replyTooLongError(url);
    }
}

} // namespace kelo::http
