#pragma once

#include "linux/session/BusService.h"
#include "linux/session/LockSource.h"

#include <map>
#include <string>

namespace kelo::session {

/// The session as the login manager on the system bus knows it: locked while its LockedHint is set,
/// and while it is not the active one of its seat.
class LoginSession final : public LockSource {
public:
    LoginSession(Bus& systemBus, Changed changed);

    bool isCertain() const override { return certain; }
    bool isLocked() const override { return certain && (lockedHint || !active); }

private:
    void came();
    void found(const std::string& path);
    void readProperties();
    void note(const std::map<Glib::ustring, Glib::VariantBase>& properties);
    void giveUp();

    Changed changed;
    bool certain = false;
    bool lockedHint = false;
    bool active = true;
    std::string path;
    BusService service;
};

} // namespace kelo::session
