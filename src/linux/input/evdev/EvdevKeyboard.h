#pragma once

#include "linux/input/evdev/DescriptorWatch.h"
#include "linux/input/evdev/EvdevDevice.h"
#include "linux/input/evdev/EvdevReader.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelo::input {

/// A keyboard that is open and watched. Main thread only.
class EvdevKeyboard : public std::enable_shared_from_this<EvdevKeyboard> {
public:
    enum class Refusal {
        none,
        /// It has none of the keys that count.
        noKeyboard,
        /// The kernel would hand out every key that is pressed, and those are none of our business.
        everyKey
    };
    /// Readies an open device: after it, the kernel hands out the keys that count and no other.
    static Refusal admit(EvdevDevice& device);

    struct Handlers {
        /// Its held keys changed, to these states one after the other.
        std::function<void(EvdevKeyboard&, const std::vector<HeldKeys>&)> changed;
        /// It is gone, and its keys with it; nothing comes any more.
        std::function<void(EvdevKeyboard&)> gone;
    };
    /// Watches an admitted device. The handlers may let the keyboard go.
    static std::shared_ptr<EvdevKeyboard> watch(std::unique_ptr<EvdevDevice> device,
                                                Handlers handlers);

    EvdevKeyboard(std::unique_ptr<EvdevDevice> device, Handlers handlers, HeldKeys initially);

    /// As last reported; kept by the one who is told.
    HeldKeys held;

private:
    void read();

    std::unique_ptr<EvdevDevice> device;
    Handlers handlers;
    EvdevReader reader;
    std::optional<DescriptorWatch> readable;
};

} // namespace kelo::input
