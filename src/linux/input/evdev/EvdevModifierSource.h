#pragma once

#include "linux/input/evdev/EvdevDevice.h"
#include "linux/input/evdev/EvdevNode.h"
#include "linux/input/source/ModifierSource.h"

#include <filesystem>
#include <memory>

namespace kelo::input {

/// Reads the Ctrl keys and the left Alt of every keyboard from the kernel, whatever the desktop and
/// whoever has the focus. The kernel is told to hand out no other key; where it cannot do that, no
/// keyboard is read. Keyboards may come and go, and may become readable later.
///
/// The user's layout and sticky keys are the desktop's doing and unknown here: keys count by their
/// place on the keyboard.
class EvdevModifierSource final : public ModifierSource {
public:
    /// Where the devices are, and how to open and describe them.
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
    /// It hears everything, but goes by the place of the keys; what our own windows are told goes
    /// by the user's layout, so that counts there.
    bool coversOwnWindows() const override { return false; }
    /// False when no keyboard can be read.
    bool start(Handler handler) override;

private:
    class Keyboards;

    Devices devices;
    std::shared_ptr<Keyboards> keyboards;
};

} // namespace kelo::input
