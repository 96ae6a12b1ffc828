#pragma once

#include "linux/input/portal/BusClient.h"
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
    ShortcutSession(BusConnection connection, std::string portalOwner, Handlers handlers);
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

    BusConnection connection;
    std::string portalOwner;
    Handlers handlers;
    std::string token;
    /// The path of the open session; empty without one.
    std::string session;
    BusCalls calls;
    BusSignal activated;
    BusSignal deactivated;
    BusSignal closed;
    std::optional<PortalRequest> request;
};

} // namespace kelo::input
