#include "linux/input/portal/PortalModifierSource.h"

#include "linux/bus/NameWatch.h"
#include "linux/input/portal/PortalAvailability.h"
#include "linux/input/portal/PortalRequest.h"
#include "linux/input/portal/ShortcutSession.h"

#include <optional>
#include <utility>

namespace kelo::input {

/// The shortcut. It outlasts the portal's restarts.
class PortalModifierSource::Shortcut : public std::enable_shared_from_this<Shortcut> {
public:
    Shortcut(Handler handler, std::function<void()> otherPress)
        : handler(std::move(handler)), otherPress(std::move(otherPress)) {}

    void start(const std::string& busAddress) {
        const auto bus = std::make_shared<bus::SharedConnection>(busAddress);
        portalWatch.emplace(*bus, portal::busName, bus::Starting::ifNeeded,
                            [this](const bus::Connection& opened, const std::string& owner) {
                                if (!opened)
                                    return g_warning("The session bus cannot be reached.");
                                connection = opened;
                                portalChanged(owner);
                            });
    }

private:
    void portalChanged(const std::string& owner) {
        mayAskAgain = true;
        session.reset();
        if (!owner.empty())
            ask(owner);
        lose();
    }

    void ask(const std::string& owner) {
        const std::weak_ptr<Shortcut> weak = weak_from_this();
        session.emplace(connection, owner,
                        ShortcutSession::Handlers{[weak](bool down) {
                                                      if (const auto self = weak.lock())
                                                          self->tell(down);
                                                  },
                                                  [weak, owner] {
                                                      if (const auto self = weak.lock())
                                                          self->sessionClosed(owner);
                                                  }});
    }

    void sessionClosed(const std::string& owner) {
        session.reset();
        // Without a limit, a portal that closes every session would be asked forever.
        if (std::exchange(mayAskAgain, false))
            ask(owner);
        lose();
    }

    // Nobody has released the shortcut, so its press must not end as a tap does.
    void lose() {
        const std::weak_ptr<Shortcut> weak = weak_from_this();
        if (isDown && otherPress)
            otherPress();
        // The handler may have destroyed this object.
        if (const auto self = weak.lock())
            self->tell(false);
    }

    void tell(bool down) {
        // The handler may destroy this object.
        const auto self = shared_from_this();
        if (std::exchange(isDown, down) != down)
            handler(down ? platform::modifier::control | platform::modifier::option : 0);
    }

    Handler handler;
    std::function<void()> otherPress;
    bool isDown = false;
    bool mayAskAgain = true;
    bus::Connection connection;
    std::optional<bus::NameWatch> portalWatch;
    std::optional<ShortcutSession> session;
};

PortalModifierSource::PortalModifierSource() : PortalModifierSource(bus::sessionAddress()) {}

PortalModifierSource::PortalModifierSource(std::string busAddress)
    : busAddress(std::move(busAddress)) {}

PortalModifierSource::~PortalModifierSource() = default;

Availability PortalModifierSource::availability() const {
    return portalAvailability(busAddress);
}

bool PortalModifierSource::start(Handler handler) {
    if (busAddress.empty())
        return false;
    shortcut = std::make_shared<Shortcut>(std::move(handler), otherPress);
    shortcut->start(busAddress);
    return true;
}

} // namespace kelo::input
