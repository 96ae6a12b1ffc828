#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "linux/input/evdev/EvdevDevice.h"
#include "linux/input/evdev/EvdevReader.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelo::input {

/// An open keyboard that is watched from the main loop. Main thread only.
class EvdevKeyboard : public std::enable_shared_from_this<EvdevKeyboard> {
public:
    enum class Refusal {
        none,
        /// The device has none of the keys of HeldKeys.
        noKeyboard,
        /// The kernel cannot hold back the other keys, and the program must not read those.
        everyKey
    };
    /// Prepares an open device: the kernel then delivers the keys of HeldKeys and no others.
    static Refusal admit(EvdevDevice& device);

    struct Handlers {
        /// The held keys changed or other keys were pressed, in this order.
        std::function<void(EvdevKeyboard&, const std::vector<KeyReport>&)> reported;
        /// The keyboard was removed. The last call.
        std::function<void(EvdevKeyboard&)> gone;
    };
    /// Watches an admitted device. The handlers may destroy the keyboard.
    static std::shared_ptr<EvdevKeyboard> watch(std::unique_ptr<EvdevDevice> device,
                                                Handlers handlers);

    EvdevKeyboard(std::unique_ptr<EvdevDevice> device, Handlers handlers, HeldKeys initially);

    /// Takes the state that was last reported. The owner calls it.
    void update(HeldKeys reported);
    /// The keys that are down now count only when they are pressed again.
    void disregardHeld() { disregarded = held; }
    /// The modifiers of the keys that count.
    platform::ModifierFlags flags() const { return held.without(disregarded).flags(); }

    /// Reports the presses of other keys, too, from now on. Events that were not read yet are
    /// discarded, and the state is brought up to date instead. Returns whether another key is down.
    bool listen();
    /// Returns false on failure: the keyboard must then be given up.
    bool stopListening();

private:
    void read();

    HeldKeys held;
    HeldKeys disregarded;
    std::unique_ptr<EvdevDevice> device;
    Handlers handlers;
    EvdevReader reader;
    std::optional<gobject::DescriptorWatch> readable;
};

} // namespace kelo::input
