#pragma once

#include "base/Bytes.h"
#include "base/async/Task.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/Deadline.h"
#include "linux/http/TrustedAuthority.h"
#include "platform/UrlRequest.h"

#include <libsoup/soup.h>

#include <memory>
#include <optional>
#include <string>

namespace kelo::http {

/// Longest reply that is taken.
inline constexpr std::size_t replyLimit = std::size_t(16) * 1024 * 1024;

struct ExchangeReply {
    int status = 0;
    std::optional<std::string> location;
    Bytes body;
};

/// Sends one message and reads its reply to the end; redirects are left to the caller. Fails with a
/// Failure. firstUrl is where the flow started, the site that cookies are judged by. The
/// deadline must outlive the task.
Task<ExchangeReply> exchange(gobject::GObjectPointer<SoupSession> session,
                             std::shared_ptr<const TrustedAuthority> authority,
                             platform::UrlRequest request, Url firstUrl, const Deadline& deadline);

} // namespace kelo::http
