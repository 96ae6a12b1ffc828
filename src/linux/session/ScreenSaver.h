#pragma once

#include "linux/session/BusService.h"
#include "linux/session/LockSource.h"

#include <memory>
#include <string>
#include <vector>

namespace kelo::session {

/// A screen saver on the session bus. Locked while it is active, with or without a lock: whoever
/// wakes it may be anybody.
class ScreenSaver final : public LockSource {
public:
    /// name: the bus name, which is the interface's name, too. path: the object's.
    ScreenSaver(Bus& sessionBus, const std::string& name, std::string path, Changed changed);

    bool isCertain() const override { return certain; }
    bool isLocked() const override { return active; }

private:
    void came();
    void note(bool isActive);

    std::string name;
    std::string path;
    Changed changed;
    bool certain = false;
    bool active = false;
    BusService service;
};

/// All that desktops are known to have.
std::vector<std::unique_ptr<LockSource>> screenSavers(Bus& sessionBus,
                                                      const LockSource::Changed& changed);

} // namespace kelo::session
