#pragma once

#include "base/Failure.h"
#include "base/Url.h"

#include <gio/gio.h>

#include <chrono>
#include <string>

namespace kelo::http {

enum class TransferPhase {
    beforeReply, ///< until the head of the response has arrived
    insideReply, ///< afterwards, while the body is read
};

/// The Failure for a GIO or libsoup error. The library's own message becomes the cause.
Failure transportError(const GError& error, TransferPhase phase, const Url& url);

/// The Failure for a refused certificate. The problems must not be zero.
Failure certificateError(GTlsCertificateFlags problems, const Url& url);

Failure timeOutError(const Url& url, std::chrono::seconds limit);
Failure replyTooLongError(const Url& url);
Failure replyBrokenOffError(const Url& url, std::string cause = {});
Failure unreadableReplyError(const Url& url, std::string cause = {});

} // namespace kelo::http
