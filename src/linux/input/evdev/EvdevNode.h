#pragma once

#include "linux/glib/FileDescriptor.h"
#include "linux/input/evdev/EvdevDevice.h"

namespace kelo::desktop {

/// A device node of the kernel, opened for reading only.
class EvdevNode final : public EvdevDevice {
public:
    /// An EvdevOpener.
    static std::unique_ptr<EvdevDevice> open(const std::filesystem::path& path);

    explicit EvdevNode(FileDescriptor node) : node(std::move(node)) {}

    int descriptor() const override { return node.get(); }
    bool isKeyboard() const override;
    bool deliverOnlyHeldKeys() override;
    std::optional<HeldKeys> heldKeys() const override;

private:
    FileDescriptor node;
};

} // namespace kelo::desktop
