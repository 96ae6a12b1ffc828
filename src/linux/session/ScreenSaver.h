#pragma once

#include "linux/bus/Calls.h"
#include "linux/bus/NameWatch.h"
#include "linux/bus/Signal.h"
#include "linux/session/LockSource.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::session {

/// A screen saver on the session bus. Locked while it is active, with or without a lock: whoever
/// wakes it may be anybody.
class ScreenSaver final : public LockSource {
public:
    /// name: the bus name, which is the interface's name, too. path: the object's.
    ScreenSaver(bus::SharedConnection& sessionBus, const std::string& name, std::string path,
                Changed changed);

    bool isCertain() const override { return certain; }
    bool isLocked() const override { return active; }

private:
    void saverChanged(const bus::Connection& connection, const std::string& owner);
    void note(bool isActive);

    std::string name;
    std::string path;
    Changed changed;
    bool certain = false;
    bool active = false;
    /// Last as long as the screen saver's program that they are for.
    std::optional<bus::Calls> calls;
    std::optional<bus::Signal> change;
    bus::NameWatch saver;
};

/// All that desktops are known to have.
std::vector<std::unique_ptr<LockSource>> screenSavers(bus::SharedConnection& sessionBus,
                                                      const LockSource::Changed& changed);

} // namespace kelo::session
