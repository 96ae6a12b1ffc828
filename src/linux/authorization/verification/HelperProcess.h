#pragma once

#include "base/async/Cancellation.h"
#include "base/async/Continuation.h"
#include "base/async/Task.h"
#include "linux/authorization/protocol/VerificationProtocol.h"
#include "linux/gobject/GObjectPointer.h"
#include "posix/FileDescriptor.h"

#include <gio/gio.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::authorization {

/// A running kelo-verify-user, or whatever stands in its place. It is killed when this goes; GLib
/// collects its exit status. Main thread, with the default GLib main context running.
class HelperProcess {
public:
    /// The extra environment is NAME=value, on top of this process's own. Null when the program
    /// cannot be started.
    static std::unique_ptr<HelperProcess> start(const std::filesystem::path& program,
                                                const std::vector<std::string>& extraEnvironment);
    ~HelperProcess();
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    /// Whether the message was handed over whole.
    bool send(MessageType type, std::string_view payload) const;

    /// The next message; nothing once the helper closed its end or broke the rules. One at a time.
    Task<std::optional<Message>> receive();

    /// Whether the helper has said something that nobody asked for, or has closed its end.
    bool spokeOutOfTurn();

    /// Cancelled when the helper closes its end or breaks the rules.
    Cancellation closed() const { return closed_; }

    /// After receive() gave nothing: whether the helper ended in order, with exit status 0 and no
    /// half message left.
    Task<bool> endedWell();

private:
    using Waiting = CheckedContinuation<std::optional<Message>>;

    HelperProcess(gobject::GObjectPointer<GSubprocess> process, posix::FileDescriptor socket);
    static gboolean readable(gint socket, GIOCondition condition, gpointer self);
    bool read();
    void deliver();

    gobject::GObjectPointer<GSubprocess> process;
    posix::FileDescriptor socket;
    guint source = 0;
    MessageReader reader;
    Cancellation closed_;
    std::optional<Waiting> waiting;
};

} // namespace kelo::authorization
