#pragma once

#include "base/async/Cancellation.h"
#include "base/async/Continuation.h"
#include "base/async/Task.h"
#include "linux/authorization/protocol/VerificationProtocol.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/MainLoopSource.h"
#include "posix/FileDescriptor.h"

#include <gio/gio.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::authorization {

/// A running helper program. The destructor kills it, and GLib reaps it. Main thread, with the
/// default GLib main context running.
class HelperProcess {
public:
    /// The extra environment (NAME=value) is added to that of this process. Null if the program
    /// cannot be started.
    static std::unique_ptr<HelperProcess> start(const std::filesystem::path& program,
                                                const std::vector<std::string>& extraEnvironment);
    ~HelperProcess();
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    /// Whether the whole message was sent.
    bool send(MessageType type, std::string_view payload) const;

    /// The next message. Nothing if the helper closed its end or violated the protocol. One call at
    /// a time.
    Task<std::optional<Message>> receive();

    /// Whether the helper has sent something out of turn or has closed its end.
    bool spokeOutOfTurn();

    /// Cancelled when the helper closes its end or violates the protocol.
    Cancellation closed() const { return closed_; }

    /// Whether the helper exited with status 0 and left no incomplete message. Call it after
    /// receive() returned nothing.
    Task<bool> endedWell();

private:
    using Waiting = CheckedContinuation<std::optional<Message>>;

    HelperProcess(gobject::GObjectPointer<GSubprocess> process, posix::FileDescriptor socket);
    void readable();
    bool read();
    void deliver();

    gobject::GObjectPointer<GSubprocess> process;
    posix::FileDescriptor socket;
    /// Ends with the helper's last message.
    std::optional<gobject::DescriptorWatch> watch;
    MessageReader reader;
    Cancellation closed_;
    std::optional<Waiting> waiting;
};

} // namespace kelo::authorization
