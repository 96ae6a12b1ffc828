#pragma once

#include "base/PlatformError.h"
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
PlatformError transportError(const GError& error, TransferPhase phase, const Url& url);

/// The sentence for a certificate that was refused. The problems must not be zero.
PlatformError certificateError(GTlsCertificateFlags problems, const Url& url);

PlatformError timeOutError(const Url& url, std::chrono::seconds limit);
PlatformError replyTooLongError(const Url& url);
PlatformError replyBrokenOffError(const Url& url, std::string cause = {});
PlatformError unreadableReplyError(const Url& url, std::string cause = {});

} // namespace kelo::http
