#pragma once

#include "linux/bus/Calls.h"
#include "linux/bus/Connection.h"
#include "linux/bus/Signal.h"
#include "linux/input/portal/PortalRequest.h"

#include <functional>
#include <optional>
#include <string>

namespace kelo::input {

/// The voice widget's shortcut at one running portal. The constructor registers it, the destructor
/// closes the session. Main thread only.
class ShortcutSession {
public:
    struct Handlers {
        /// The shortcut was pressed (true) or released (false).
        std::function<void(bool down)> pressed;
        /// The portal closed the session. May destroy this object.
        std::function<void()> closed;
    };

    /// Registers the shortcut at once. If it is refused, no handler is called. portalOwner: the
    /// portal's unique bus name, so that no other program can pose as the portal.
    ShortcutSession(bus::Connection connection, std::string portalOwner, Handlers handlers);
    ~ShortcutSession();
    ShortcutSession(const ShortcutSession&) = delete;
    ShortcutSession& operator=(const ShortcutSession&) = delete;

private:
    void introduce();
    void create();
    void created(GVariant* results);
    void bind();
    void close();
    void triggered(GVariant* values, bool down);

    bus::Connection connection;
    std::string portalOwner;
    Handlers handlers;
    /// The path of the open session; empty without one.
    std::string session;
    bus::Calls calls;
    bus::Signal activated;
    bus::Signal deactivated;
    bus::Signal closed;
    std::optional<PortalRequest> request;
};

} // namespace kelo::input
