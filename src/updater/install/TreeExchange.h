#pragma once

#include "posix/FileDescriptor.h"

#include <filesystem>
#include <functional>
#include <string>

namespace kelo::updater {

/// What an exchange asks of the system; tests put something else in its place.
struct ExchangeCalls {
    /// Lets the two names change places in one step: 0, or an error number.
    std::function<int(int parent, const char* name, int otherParent, const char* otherName)>
        exchange;
    /// Called between any two changes on the disk.
    std::function<void()> step = [] {};

    ExchangeCalls();
};

/// The work folder of an installed tree: beside it, so that renaming suffices, and named after it,
/// so that the next start finds it.
///
///   unpacking/   an archive, as far as it has been unpacked
///   new/         the staged tree; once the trees have changed places, for a moment, the old one
///   old/         the old tree, until the new program has started
///   previous/    the old tree's pieces, where trees cannot change places in one step
///   added/       the names of pieces that the old tree did not have
///   discarded/   pieces of the new tree that were taken back
std::string workFolderName(const std::filesystem::path& root);

/// Puts the tree "new" of the work folder in the place of the installed one. Where the file system
/// can, the two change places in one step. Where it cannot, piece after piece changes hands, each
/// file of bin in one step and the program as the last: whatever ends this process, and wherever,
/// the program at its place is the whole old or the whole new one. Fails with an UpdateError, with
/// everything as it was. Blocks.
void exchangeTrees(const std::filesystem::path& root, int parent, int work,
                   const ExchangeCalls& calls);

/// Whether a process ended while pieces were changing hands.
bool exchangeWasInterrupted(int work);

/// Gives the old tree its pieces back. Can be interrupted, and called again. False when something
/// could not be put back.
bool takeBack(const std::filesystem::path& root, int parent, int work, const ExchangeCalls& calls);

} // namespace kelo::updater
