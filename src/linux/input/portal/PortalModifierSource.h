#pragma once

#include "linux/input/source/ModifierSource.h"

#include <memory>
#include <string>

namespace kelo::input {

/// Registers the shortcut Ctrl+Alt+Space with the desktop's portal; the user may choose other keys.
/// Reports the shortcut's press and release as those of Control and Option. The desktop may ask the
/// user first. If the user refuses, nothing is ever reported.
class PortalModifierSource final : public ModifierSource {
public:
    /// Uses the session bus.
    PortalModifierSource();
    /// Uses the bus at this address; an empty address means that there is no bus.
    explicit PortalModifierSource(std::string busAddress);
    ~PortalModifierSource() override;

    std::string name() const override { return "portal"; }
    /// Starts no portal. Blocks for 2 s at most while a running portal responds.
    Availability availability() const override;
    /// False: our own windows support the chord without Space, which the portal cannot register.
    bool coversOwnWindows() const override { return false; }
    /// Returns false if there is no bus. Registers the shortcut in the background: when the portal
    /// appears, after each of its restarts, and once more if it closes the session.
    bool start(Handler handler) override;

private:
    class Shortcut;

    std::string busAddress;
    std::shared_ptr<Shortcut> shortcut;
};

} // namespace kelo::input
