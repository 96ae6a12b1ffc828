#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "posix/FileDescriptor.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelo::input {

/// Reports changes to the entries of a folder from the main loop. The destructor ends the watch.
/// Main thread only.
class FolderWatch {
public:
    struct Handlers {
        /// An entry was created or replaced.
        std::function<void(const std::string& name)> appeared;
        /// Its owner or permissions changed.
        std::function<void(const std::string& name)> permitted;
        std::function<void(const std::string& name)> vanished;
        /// Changes were missed: any entry may have changed.
        std::function<void()> unsure;
    };

    /// Returns null if the folder cannot be watched.
    static std::unique_ptr<FolderWatch> watch(const std::filesystem::path& folder,
                                              Handlers handlers);

    FolderWatch(posix::FileDescriptor notices, Handlers handlers);

private:
    void read();

    posix::FileDescriptor notices;
    std::shared_ptr<const Handlers> handlers;
    std::optional<gobject::DescriptorWatch> readable;
};

} // namespace kelo::input
