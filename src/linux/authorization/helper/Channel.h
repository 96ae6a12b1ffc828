#pragma once

#include "base/SecretText.h"
#include "linux/authorization/protocol/VerificationProtocol.h"

#include <optional>
#include <string_view>

namespace kelo::authorization {

/// The helper's end of the talk with Kelo. Takes standard input and output for itself: what a
/// module of PAM prints must not get between the messages, and what it starts must not hold them
/// open.
class Channel {
public:
    Channel();
    ~Channel();
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    /// Blocks for the next message. Nothing when Kelo closed its end or broke the rules.
    std::optional<Message> receive();
    /// Whether it was sent whole.
    bool send(MessageType type, std::string_view payload);

    /// Ends the process as soon as Kelo closes its end, also in the middle of a module that waits
    /// for a finger: from a thread of its own, since PAM cannot be interrupted.
    void endProcessWhenClosed() const;

private:
    int input;
    int output;
    MessageReader reader;
};

} // namespace kelo::authorization
