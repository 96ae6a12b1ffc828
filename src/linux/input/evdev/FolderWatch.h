#pragma once

#include "linux/input/evdev/DescriptorWatch.h"
#include "posix/FileDescriptor.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelo::input {

/// Tells what happens to the entries of a folder, in the main loop, until it goes. Main thread
/// only.
class FolderWatch {
public:
    struct Handlers {
        /// An entry is new, or another in place of the old one.
        std::function<void(const std::string& name)> appeared;
        /// Its owner or permissions changed.
        std::function<void(const std::string& name)> permitted;
        std::function<void(const std::string& name)> vanished;
        /// Anything may have happened: look at all of them.
        std::function<void()> unsure;
    };

    /// Null when the folder cannot be watched.
    static std::unique_ptr<FolderWatch> watch(const std::filesystem::path& folder,
                                              Handlers handlers);

    FolderWatch(posix::FileDescriptor notices, Handlers handlers);

private:
    void read();

    posix::FileDescriptor notices;
    std::shared_ptr<const Handlers> handlers;
    std::optional<DescriptorWatch> readable;
};

} // namespace kelo::input
