#pragma once

#include "updater/tree/InstallRecovery.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::startup {

/// How long the main loop has to run until a start counts as having gone well.
inline constexpr std::chrono::seconds startedAfter{10};

/// The preparation of this process, and what its start means to an update of the tree that it runs
/// from. Main thread only.
class ProcessStart {
public:
    /// Make it first in main(), before any thread and before GTK starts, because it sets
    /// environment variables. words: the arguments of main(), the program's name included.
    ///
    /// - Tells moments, if it is asked to (Moments.h).
    /// - If an update of the tree was interrupted, waits to be installed, or did not start last
    ///   time, puts the tree in order first (InstallRecovery.h), and runs the program that it then
    ///   holds in this one's place.
    /// - Removes environment variables that open the program to others (UnsafeVariables.h).
    /// - Keeps the security chip's library from printing (OwnVariables.h).
    /// - Follows the user's locale, with translations from where this program is installed
    ///   (linux/locale/UserLocale.h).
    /// - Limits the memory that the allocator keeps.
    /// - Chooses the renderer (RendererChoice.h).
    /// - Works around web views that stay blank with NVIDIA's own kernel driver.
    explicit ProcessStart(const std::vector<std::string>& words);

    /// Confirms the start once the main loop has run for ten seconds, and removes what an update
    /// has left beside the tree. Call it when the main loop is installed.
    ///
    /// The end of the process with status 0 confirms the start, too, if the loop has run. If it has
    /// not (for --help, or to activate a running process), nothing is known about the start.
    void confirmLater();

    /// An update that was taken back because it did not start.
    std::optional<updater::TreeUpdate> failedUpdate() const;

private:
    struct Trial {
        updater::TreeStart tree;
        bool loopRan = false;
    };
    static void ended(int status, void* trial);

    /// Shared with the main loop and with what runs at the end of the process. Null for a program
    /// that no update can have replaced.
    std::shared_ptr<Trial> trial;
};

} // namespace kelo::startup
