#pragma once

#include "linux/input/evdev/EvdevDevices.h"
#include "linux/input/source/ModifierSource.h"

#include <functional>
#include <memory>
#include <utility>

namespace kelo::input {

class WatchedKeyboards;

/// Reads the Ctrl keys and the left Alt key of every keyboard from the kernel, on any desktop and
/// whichever window has the focus. The kernel is told to deliver no other key, except while one of
/// these is down: then it delivers all keys, and this class reports that there was another press.
/// If the kernel cannot hold keys back, no keyboard is read. Keyboards may be plugged in, removed
/// or become readable at any time.
///
/// Reads only the keyboards of the seat of this login session, and none while another session has
/// the screen. When a keyboard or the session goes while modifiers are down, that counts as another
/// press, too.
///
/// The kernel does not know the user's layout or sticky keys: a key counts by its place on the
/// keyboard.
class EvdevModifierSource final : public ModifierSource {
public:
    using Devices = EvdevDevices;

    EvdevModifierSource() : EvdevModifierSource(Devices{}) {}
    explicit EvdevModifierSource(Devices devices);
    ~EvdevModifierSource() override;

    std::string name() const override { return "evdev"; }
    /// Blocks for 5 s at most while the login manager responds.
    Availability availability() const override;
    /// False: our own windows get events that respect the user's layout, and those count there.
    bool coversOwnWindows() const override { return false; }
    /// Returns false if no keyboard can be read. Does not wait for the login manager. Keyboards do
    /// not count before it has responded.
    bool start(Handler handler) override;
    void onOtherPress(std::function<void()> handler) override { otherPress = std::move(handler); }

private:
    Devices devices;
    std::function<void()> otherPress;
    std::shared_ptr<WatchedKeyboards> keyboards;
};

} // namespace kelo::input
