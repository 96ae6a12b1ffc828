#pragma once

#include "posix/FileDescriptor.h"
#include "updater/install/InstallRecovery.h"
#include "updater/install/TreeExchange.h"

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::updater {

/// What a work folder says of the tree beside it.
enum class TreeState {
    settled,   ///< nothing to be done; what is left in the folder can be removed
    cutOff,    ///< an exchange piece by piece did not come to its end, in either direction
    staged,    ///< an update waits to be installed
    onTrial,   ///< an update is installed, and no start of it was confirmed yet
    takenBack, ///< the tree before an update that did not start is in its place again
};

/// The work folder beside an installed tree, held with a lock. Besides the folders that
/// TreeExchange.h names it contains:
///
///   update       which update it is about, from the moment that it is completely staged
///   starting     the update was started; locked by the process that was, while that is on trial
///   set-aside    the same, but that process ended without having had anything to show for it
///   taking-back  the pieces of the tree before are on their way back
///   failed       takes the place of "update" once the tree before it is back
///
/// Calls block and never throw, unless they say so.
class WorkFolder {
public:
    /// None if there is no such folder, if it is another user's, or if a process has locked it.
    static std::optional<WorkFolder> take(const std::filesystem::path& root);

    TreeState state() const;
    /// Nothing if the folder is about none.
    std::optional<TreeUpdate> update() const;
    /// Puts the staged tree in place. Throws an UpdateError; the installed tree is unchanged then.
    void install(const ExchangeCalls& calls) const;
    /// Puts the tree before an update on trial back. False if that failed.
    bool takeTreeBack(const ExchangeCalls& calls) const;
    /// Ends what was cut off, at the old tree. False if pieces are still missing.
    bool endCutOff(const ExchangeCalls& calls) const;
    /// Removes the folder with all that is in it.
    void remove(const ExchangeCalls& calls) const;

    int descriptor() const { return folder.get(); }
    bool has(const char* name) const;

    static constexpr const char* starting = "starting";
    static constexpr const char* setAside = "set-aside";

private:
    WorkFolder(std::filesystem::path root, posix::FileDescriptor parent,
               posix::FileDescriptor folder);
    void noteTakenBack() const;
    const char* treeBefore() const;

    std::filesystem::path root;
    posix::FileDescriptor parent;
    posix::FileDescriptor folder;
};

/// Says in a work folder that the update is completely staged. False on failure, with errno set.
bool markStaged(int workFolder, const TreeUpdate& update);

/// What the information dictionary of a tree says of its version. Nothing if it has none.
std::optional<TreeUpdate> versionOf(const std::filesystem::path& tree);

} // namespace kelo::updater
