#pragma once

#include "platform/PlatformError.h"
#include "platform/Url.h"

#include <gio/gio.h>

#include <chrono>
#include <string>

namespace kelo::desktop {

enum class TransferPhase {
    beforeReply, ///< looking up, connecting, securing the connection, sending, waiting
    insideReply, ///< the head of the reply is here
};

/// The sentence for a GIO or libsoup error; what the library said goes into the cause.
platform::PlatformError transportError(const GError& error, TransferPhase phase,
                                       const platform::Url& url);

/// The sentence for a certificate that was refused. The problems must not be zero.
platform::PlatformError certificateError(GTlsCertificateFlags problems, const platform::Url& url);

platform::PlatformError timeOutError(const platform::Url& url, std::chrono::seconds limit);
platform::PlatformError replyTooLongError(const platform::Url& url);
platform::PlatformError replyBrokenOffError(const platform::Url& url, std::string cause = {});
platform::PlatformError unreadableReplyError(const platform::Url& url, std::string cause = {});

} // namespace kelo::desktop
