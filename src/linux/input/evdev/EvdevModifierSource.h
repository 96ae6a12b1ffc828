#pragma once

#include "linux/input/evdev/EvdevDevice.h"
#include "linux/input/evdev/EvdevNode.h"
#include "linux/input/source/ModifierSource.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <utility>

namespace kelo::input {

/// Reads the Ctrl keys and the left Alt key of every keyboard from the kernel, on any desktop and
/// whichever window has the focus. The kernel is told to deliver no other key, except while one of
/// these is down: then it delivers all keys, and this class reports that there was another press.
/// If the kernel cannot hold keys back, no keyboard is read. Keyboards may be plugged in, removed
/// or become readable at any time.
///
/// The kernel does not know the user's layout or sticky keys: a key counts by its place on the
/// keyboard.
class EvdevModifierSource final : public ModifierSource {
public:
    /// Where the devices and their descriptions are, and how a device is opened.
    struct Devices {
        std::filesystem::path folder = "/dev/input";
        std::filesystem::path descriptions = "/sys/class/input";
        EvdevOpener open = EvdevNode::open;
    };

    EvdevModifierSource() : EvdevModifierSource(Devices{}) {}
    explicit EvdevModifierSource(Devices devices);
    ~EvdevModifierSource() override;

    std::string name() const override { return "evdev"; }
    Availability availability() const override;
    /// False: our own windows get events that respect the user's layout, and those count there.
    bool coversOwnWindows() const override { return false; }
    /// Returns false if no keyboard can be read.
    bool start(Handler handler) override;
    void onOtherPress(std::function<void()> handler) override { otherPress = std::move(handler); }

private:
    class Keyboards;

    Devices devices;
    std::function<void()> otherPress;
    std::shared_ptr<Keyboards> keyboards;
};

} // namespace kelo::input
