#pragma once

#include "linux/input/evdev/HeldKeys.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace kelo::input {

struct KeysDown {
    HeldKeys held;
    bool others = false;
};

/// An open input device of the kernel. The destructor closes it.
class EvdevDevice {
public:
    virtual ~EvdevDevice() = default;

    /// Delivers records of struct input_event. Reading never blocks.
    virtual int descriptor() const = 0;
    /// Whether the device has one of the keys of HeldKeys.
    virtual bool isKeyboard() const = 0;
    /// Tells the kernel to deliver only those keys from now on. Returns false on failure.
    virtual bool deliverOnlyHeldKeys() = 0;
    /// Tells the kernel to deliver the other keys, too, which are those of isOtherKey(). Returns
    /// false on failure; then, nothing changes.
    virtual bool deliverOtherKeys() = 0;
    /// The keys that are down now; empty on failure. Discards events that were not read yet.
    virtual std::optional<HeldKeys> heldKeys() const = 0;
    /// The same, and whether one of the other keys is down.
    virtual std::optional<KeysDown> keysDown() const = 0;
};

/// Opens a device. Returns null on failure.
using EvdevOpener = std::function<std::unique_ptr<EvdevDevice>(const std::filesystem::path&)>;

} // namespace kelo::input
