#pragma once

#include "base/Failure.h"
#include "base/Url.h"

#include <gio/gio.h>

#include <chrono>
#include <string>

namespace kelo::http {

enum class TransferPhase {
    beforeReply, ///< looking up, connecting, securing the connection, sending, waiting
    insideReply, ///< the head of the reply is here
};

/// The sentence for a GIO or libsoup error; what the library said goes into the cause.
Failure transportError(const GError& error, TransferPhase phase, const Url& url);

/// The sentence for a certificate that was refused. The problems must not be zero.
Failure certificateError(GTlsCertificateFlags problems, const Url& url);

Failure timeOutError(const Url& url, std::chrono::seconds limit);
Failure replyTooLongError(const Url& url);
Failure replyBrokenOffError(const Url& url, std::string cause = {});
Failure unreadableReplyError(const Url& url, std::string cause = {});

} // namespace kelo::http
