#pragma once

#include "linux/input/evdev/HeldKeys.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace kelo::input {

/// An open input device, as the kernel serves it. Closes when it goes.
class EvdevDevice {
public:
    virtual ~EvdevDevice() = default;

    /// For reading records of struct input_event; never blocks.
    virtual int descriptor() const = 0;
    /// Whether it has one of the keys of HeldKeys.
    virtual bool isKeyboard() const = 0;
    /// Has the kernel hand out nothing but those keys from now on; false when it cannot.
    virtual bool deliverOnlyHeldKeys() = 0;
    /// Which of them are down, and forgets what was waiting to be read; nothing on failure.
    virtual std::optional<HeldKeys> heldKeys() const = 0;
};

/// Null when the device cannot be opened.
using EvdevOpener = std::function<std::unique_ptr<EvdevDevice>(const std::filesystem::path&)>;

} // namespace kelo::input
