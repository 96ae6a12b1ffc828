#pragma once

#include "posix/FileDescriptor.h"

#include <filesystem>
#include <string>

namespace kelo {

/// A keyboard that the kernel takes for a real one, made by uinput. It is unplugged when it goes.
/// Its keys reach the whole desktop: it has the modifiers, and F24, which hardly anybody uses.
class KernelKeyboard {
public:
    KernelKeyboard();

    /// The kernel's name of its node: "event3".
    const std::string& name() const { return node; }
    void press(int key) const { type(key, 1); }
    void release(int key) const { type(key, 0); }

    /// Silences it, as a laptop that is folded to a tablet does. The kernel releases its keys.
    bool inhibit() const;

private:
    void type(int key, int value) const;

    posix::FileDescriptor device;
    /// What the kernel says of it.
    std::filesystem::path folder;
    std::string node;
};

} // namespace kelo
