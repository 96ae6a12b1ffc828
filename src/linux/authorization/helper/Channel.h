#pragma once

#include "base/SecretText.h"
#include "linux/authorization/protocol/VerificationProtocol.h"
#include "posix/FileDescriptor.h"

#include <optional>
#include <string_view>

namespace kelo::authorization {

/// The helper's end of the connection to Kelo. Takes over standard input and output, so that output
/// of a PAM module cannot get between the messages and a child process of a module cannot keep the
/// connection open. There is one per process.
class Channel {
public:
    Channel();
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    /// Waits for the next message. Nothing if Kelo closed its end or violated the protocol.
    std::optional<Message> receive();
    /// Whether the whole message was sent.
    bool send(MessageType type, std::string_view payload);

    /// Ends the process when Kelo closes its end. A separate thread does so, because PAM cannot be
    /// interrupted, for instance while a module waits for a fingerprint.
    void endProcessWhenClosed() const;

private:
    /// Stays open until the process ends: the thread of endProcessWhenClosed() watches it.
    const int input;
    posix::FileDescriptor output;
    MessageReader reader;
};

} // namespace kelo::authorization
