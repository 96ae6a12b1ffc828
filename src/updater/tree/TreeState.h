#pragma once

#include "updater/tree/InstallRecovery.h"

#include <filesystem>
#include <optional>

namespace kelo::updater {

/// What a work folder says of the tree beside it.
enum class TreeState {
    settled,   ///< nothing to be done; what is left in the folder can be removed
    cutOff,    ///< an exchange piece by piece did not come to its end, in either direction
    staged,    ///< an update waits to be installed
    onTrial,   ///< an update is installed, and no start of it was confirmed yet
    takenBack, ///< the tree before an update that did not start is in its place again
};

TreeState stateOf(const WorkFolder& work);

/// The update that the folder is about. Nothing if it is about none.
std::optional<TreeUpdate> updateOf(const WorkFolder& work);

/// Says in a work folder that the update is completely staged. False on failure, with errno set.
bool markStaged(int workFolder, const TreeUpdate& update);

/// What the information dictionary of a tree says of its version. Nothing if it has none.
std::optional<TreeUpdate> versionOf(const std::filesystem::path& tree);

} // namespace kelo::updater
