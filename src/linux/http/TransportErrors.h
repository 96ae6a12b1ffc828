#pragma once

#include "base/Failure.h"
#include "base/Url.h"

#include <gio/gio.h>

#include <chrono>
#include <string>

namespace kelo::http {

/// How far a request has come, in this order.
enum class TransferPhase {
    connecting,    ///< until TLS is set up
    awaitingReply, ///< afterwards, until the head of the response has arrived
    insideReply,   ///< afterwards, while the body is read
};

/// The Failure for a GIO or libsoup error. The library's own message becomes the cause.
Failure transportError(const GError& error, TransferPhase phase, const Url& url);

/// The Failures for a proxy, named by its host and port, that gives no connection to the server:
/// because it is not there itself, because it breaks off, and because it answers with a status.
Failure noProxyError(const GError& error, const std::string& proxy, const Url& url);
Failure proxyError(const GError& error, const std::string& proxy, const Url& url);
Failure proxyRefusalError(int status, const std::string& proxy, const Url& url);

/// The Failure for a refused certificate. The problems must not be zero.
Failure certificateError(GTlsCertificateFlags problems, const Url& url);

Failure timeOutError(const std::string& host, std::chrono::seconds limit);
/// proxy: its host and port.
Failure proxyTimeOutError(const std::string& proxy, std::chrono::seconds limit);
Failure replyTooLongError(const Url& url);
Failure replyBrokenOffError(const Url& url, std::string cause = {});
Failure unreadableReplyError(const Url& url, std::string cause = {});

} // namespace kelo::http
