#pragma once

#include "base/Bytes.h"
#include "base/async/Task.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/ChunkedBody.h"
#include "linux/http/Deadline.h"
#include "linux/http/TrustedAuthority.h"
#include "platform/UrlRequest.h"

#include <libsoup/soup.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kelo::http {

/// What the signals of a message write down for the flow.
struct Handshake;

/// A reply whose head is here, and whose body is still to come.
class OpenReply {
public:
    OpenReply(gobject::GObjectPointer<SoupMessage> message,
              gobject::GObjectPointer<GInputStream> stream,
              std::shared_ptr<const Handshake> handshake, platform::UrlRequest request,
              const Deadline& deadline);

    int status() const;
    std::optional<std::string> location() const;
    /// Nothing when the server does not say.
    std::optional<std::uint64_t> announcedLength() const;

    /// The next bytes of the body, as they come; empty once it has ended as it should. Fails with a
    /// Failure for a body that breaks off.
    Task<Bytes> read();

private:
    Bytes taken(GBytes* bytes);

    gobject::GObjectPointer<SoupMessage> message;
    gobject::GObjectPointer<GInputStream> stream;
    std::shared_ptr<const Handshake> handshake;
    platform::UrlRequest request;
    const Deadline& deadline;
    GInputStream* source; ///< the stream, or the connection below it
    std::optional<ChunkedBody> chunks;
    bool finished = false;
};

/// Sends one message and waits for the head of its reply; redirects are left to the caller. Fails
/// with a Failure. firstUrl is where the flow started, the site that cookies are judged by.
/// The deadline must outlive the task and the reply.
Task<std::unique_ptr<OpenReply>> openReply(gobject::GObjectPointer<SoupSession> session,
                                           std::shared_ptr<const TrustedAuthority> authority,
                                           platform::UrlRequest request, Url firstUrl,
                                           const Deadline& deadline);

} // namespace kelo::http
