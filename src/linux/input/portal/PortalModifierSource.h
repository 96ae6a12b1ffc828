#pragma once

#include "linux/input/source/ModifierSource.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kelo::input {

/// Registers the shortcut Ctrl+Alt+Space with the desktop's portal; the user may choose other keys.
/// Reports the shortcut's press and release as those of Control and Option. The desktop may ask the
/// user first. If the user refuses, or if the portal offers no global shortcuts, nothing is ever
/// reported.
class PortalModifierSource final : public ModifierSource {
public:
    /// Uses the session bus.
    PortalModifierSource();
    /// Uses the bus at this address; an empty address means that there is no bus.
    explicit PortalModifierSource(std::string busAddress);
    ~PortalModifierSource() override;

    std::string name() const override { return "portal"; }
    /// Starts no portal. Blocks for 10 s at most while a running portal responds.
    Availability availability() const override;
    /// False: our own windows support the chord without Space, which the portal cannot register.
    bool coversOwnWindows() const override { return false; }
    /// Waits for nobody. Returns false if there is no bus. Registers the shortcut in the
    /// background: when the portal appears, after each of its restarts, and once more if it closes
    /// the session. A portal may take as long as it likes.
    bool start(Handler handler) override;
    /// The portal tells of no other press. Called only when the portal goes while the shortcut is
    /// down.
    void onOtherPress(std::function<void()> handler) override { otherPress = std::move(handler); }

private:
    class Shortcut;

    std::string busAddress;
    std::function<void()> otherPress;
    std::shared_ptr<Shortcut> shortcut;
};

} // namespace kelo::input
