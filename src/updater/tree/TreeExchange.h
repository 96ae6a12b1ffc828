#pragma once

#include "posix/FileDescriptor.h"

#include <filesystem>
#include <functional>
#include <string>

namespace kelo::updater {

/// The system calls of an exchange; tests replace them.
struct ExchangeCalls {
    /// Exchanges the two names atomically. Returns 0 or an errno.
    std::function<int(int parent, const char* name, int otherParent, const char* otherName)>
        exchange;
    /// Called between any two changes to the disk.
    std::function<void()> step = [] {};

    ExchangeCalls();
};

/// Name of an installed tree's work folder. It is beside the tree, so that files can be moved by
/// renaming, and named after it, so that the next start finds it. It contains:
///
///   unpacking/   an archive that is being unpacked
///   new/         the staged tree; for a moment after the exchange, the old one
///   old/         the old tree, until a start of the new program was confirmed
///   previous/    pieces of the old tree, if the trees cannot be exchanged atomically
///   added/       folders named after the pieces that the old tree did not have
///   discarded/   pieces of the new tree that were removed again
std::string workFolderName(const std::filesystem::path& root);

/// Replaces the installed tree by the work folder's "new". The two are exchanged atomically if the
/// file system supports it, else piece by piece: each file of bin atomically, the program last. So
/// even if this process is killed, the installed program is completely the old or the new one. On
/// failure restores the old tree and throws an UpdateError. Blocks.
void exchangeTrees(const std::filesystem::path& root, int parent, int work,
                   const ExchangeCalls& calls);

/// Whether a process ended during an exchange piece by piece.
bool exchangeWasInterrupted(int work);

/// Moves the old tree's pieces back, its program first, after an exchange piece by piece that was
/// interrupted or complete. May be interrupted and called again. False if something could not be
/// moved back.
bool takeBack(const std::filesystem::path& root, int parent, int work, const ExchangeCalls& calls);

} // namespace kelo::updater
