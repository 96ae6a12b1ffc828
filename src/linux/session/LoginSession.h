#pragma once

#include "linux/bus/Calls.h"
#include "linux/bus/NameWatch.h"
#include "linux/bus/Signal.h"
#include "linux/session/LockSource.h"
#include "linux/session/SeatSession.h"

#include <functional>
#include <optional>
#include <string>

namespace kelo::session {

/// The session as the login manager on the system bus knows it: locked while its LockedHint is set,
/// and while it is not the active one of its seat.
class LoginSession final : public LockSource, public SeatSession {
public:
    LoginSession(bus::SharedConnection& systemBus, std::function<void()> changed);

    bool isCertain() const override { return certain; }
    bool isLocked() const override { return certain && (lockedHint || !active); }
    bool isActive() const override { return active; }
    std::string seat() const override { return seatName; }

private:
    void managerChanged(const bus::Connection& opened, const std::string& owner);
    void found(const std::string& path);
    void readProperties();
    void propertiesChanged(GVariant* values);
    void note(GVariant* known);
    void giveUp();
    void tell();

    std::function<void()> changed;
    bool certain = false;
    bool lockedHint = false;
    bool active = true;
    std::string seatName = firstSeat;
    bus::Connection connection;
    /// The properties of the session.
    bus::Object properties;
    /// Last as long as the manager that they are for.
    std::optional<bus::Calls> calls;
    std::optional<bus::Signal> change;
    bus::NameWatch manager;
};

} // namespace kelo::session
