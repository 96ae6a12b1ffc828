#pragma once

#include "posix/FileDescriptor.h"
#include "updater/tree/TreeExchange.h"

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::updater {

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

    /// Whether an exchange piece by piece did not come to its end, in either direction.
    bool isCutOff() const;
    /// Whether the tree before the installed one is here, whole or in pieces.
    bool hasTreeBefore() const;
    /// Whether the folder of this name holds a tree.
    bool hasProgram(const char* name) const;
    /// Puts the staged tree in place. Throws an UpdateError; the installed tree is unchanged then.
    void install(const ExchangeCalls& calls) const;
    /// Puts the tree before an update on trial back. False if that failed.
    bool takeTreeBack(const ExchangeCalls& calls) const;
    /// Ends what was cut off, at the old tree. False if pieces are still missing.
    bool endCutOff(const ExchangeCalls& calls) const;
    /// Removes the folder with all that is in it.
    void remove(const ExchangeCalls& calls) const;

    int descriptor() const { return folder.get(); }
    const std::filesystem::path& tree() const { return root; }
    bool has(const char* name) const;

    static constexpr const char* updateMark = "update";
    static constexpr const char* failedMark = "failed";
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

} // namespace kelo::updater
