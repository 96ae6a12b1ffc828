#pragma once

#include "linux/input/portal/BusClient.h"
#include "linux/input/portal/PortalRequest.h"

#include <functional>
#include <optional>
#include <string>

namespace kelo::input {

/// The voice widget's shortcut at one running portal, from asking for it until it goes, when the
/// portal is told so. Main thread only.
class ShortcutSession {
public:
    struct Handlers {
        /// The shortcut went down, or up again.
        std::function<void(bool down)> pressed;
        /// The portal ended it. May let the session go.
        std::function<void()> closed;
    };

    /// Asks at once, and tells nothing when it is refused. The portal is known by its unique name,
    /// so that nobody else can play it.
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
    /// Empty as long as there is none.
    std::string session;
    BusCalls calls;
    BusSignal activated;
    BusSignal deactivated;
    BusSignal closed;
    std::optional<PortalRequest> request;
};

} // namespace kelo::input
