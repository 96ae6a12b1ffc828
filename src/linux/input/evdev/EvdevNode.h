#pragma once

#include "linux/input/evdev/EvdevDevice.h"
#include "posix/FileDescriptor.h"

namespace kelo::input {

/// A device node of the kernel, opened read-only.
class EvdevNode final : public EvdevDevice {
public:
    /// An EvdevOpener.
    static std::unique_ptr<EvdevDevice> open(const std::filesystem::path& path);

    explicit EvdevNode(posix::FileDescriptor node) : node(std::move(node)) {}

    int descriptor() const override { return node.get(); }
    bool isKeyboard() const override;
    bool deliverOnlyHeldKeys() override;
    bool deliverOtherKeys() override;
    std::optional<HeldKeys> heldKeys() const override;
    std::optional<KeysDown> keysDown() const override;

private:
    posix::FileDescriptor node;
};

} // namespace kelo::input
