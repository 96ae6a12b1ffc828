#pragma once

#include "linux/input/portal/BusClient.h"
#include "linux/input/source/ModifierSource.h"

#include <memory>
#include <string>

namespace kelo::input {

/// Has the desktop's portal watch for Ctrl+Alt+Space, or the keys that the user chose instead, and
/// takes the shortcut's press and release for those of Control and Option. The desktop may ask the
/// user first; if they refuse, nothing ever comes.
class PortalModifierSource final : public ModifierSource {
public:
    /// The address of the bus; empty when there is none.
    explicit PortalModifierSource(std::string busAddress = sessionBusAddress());
    ~PortalModifierSource() override;

    std::string name() const override { return "portal"; }
    /// Starts no portal. Waits for the running one's answer, 2 s at most.
    Availability availability() const override;
    /// In our own windows the bare chord is to work, too, which the portal cannot offer. What it
    /// tells meanwhile is not counted beside it.
    bool coversOwnWindows() const override { return false; }
    /// False when there is no bus. Goes on in the background: asks the portal for the shortcut when
    /// it is there and anew whenever it is restarted, and once more when it ends the shortcut.
    bool start(Handler handler) override;

private:
    class Shortcut;

    std::string busAddress;
    std::shared_ptr<Shortcut> shortcut;
};

} // namespace kelo::input
