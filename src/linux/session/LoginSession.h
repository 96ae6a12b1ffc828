#pragma once

#include "linux/bus/Calls.h"
#include "linux/bus/NameWatch.h"
#include "linux/bus/Signal.h"
#include "linux/session/LockSource.h"

#include <optional>
#include <string>

namespace kelo::session {

/// The session as the login manager on the system bus knows it: locked while its LockedHint is set,
/// and while it is not the active one of its seat.
class LoginSession final : public LockSource {
public:
    LoginSession(bus::SharedConnection& systemBus, Changed changed);

    bool isCertain() const override { return certain; }
    bool isLocked() const override { return certain && (lockedHint || !active); }

private:
    void managerChanged(const bus::Connection& opened, const std::string& owner);
    void found(const std::string& path);
    void readProperties();
    void propertiesChanged(GVariant* values);
    void note(GVariant* known);
    void giveUp();

    Changed changed;
    bool certain = false;
    bool lockedHint = false;
    bool active = true;
    bus::Connection connection;
    /// The properties of the session.
    bus::Object properties;
    /// Last as long as the manager that they are for.
    std::optional<bus::Calls> calls;
    std::optional<bus::Signal> change;
    bus::NameWatch manager;
};

} // namespace kelo::session
