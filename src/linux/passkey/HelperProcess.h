#pragma once

#include "authenticator/Cancellation.h"
#include "linux/glib/FileDescriptor.h"
#include "linux/glib/GObjectPointer.h"
#include "linux/passkey/verification/VerificationProtocol.h"
#include "platform/Continuation.h"
#include "platform/Task.h"

#include <gio/gio.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::desktop {

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
    platform::Task<std::optional<Message>> receive();

    /// Whether the helper has said something that nobody asked for, or has closed its end.
    bool spokeOutOfTurn();

    /// Cancelled when the helper closes its end or breaks the rules.
    authenticator::Cancellation closed() const { return closed_; }

    /// After receive() gave nothing: whether the helper ended in order, with exit status 0 and no
    /// half message left.
    platform::Task<bool> endedWell();

private:
    using Waiting = platform::CheckedContinuation<std::optional<Message>>;

    HelperProcess(GObjectPointer<GSubprocess> process, FileDescriptor socket);
    static gboolean readable(gint socket, GIOCondition condition, gpointer self);
    bool read();
    void deliver();

    GObjectPointer<GSubprocess> process;
    FileDescriptor socket;
    guint source = 0;
    MessageReader reader;
    authenticator::Cancellation closed_;
    std::optional<Waiting> waiting;
};

} // namespace kelo::desktop
