#pragma once

#include "updater/install/TreeExchange.h"

#include <filesystem>

/// Called by a starting program to finish or undo an update of its own tree that another process
/// left incomplete. The root is the tree that the program runs from. Both functions look for the
/// work folder beside the tree; they do nothing if it is missing or locked by a running process.
/// They never fail.
namespace kelo::updater {

/// If an exchange was interrupted, moves the old tree's pieces back; this program belongs to the
/// old tree then. Call it before the program reads anything in its tree.
void repairInstalledTree(const std::filesystem::path& root,
                         const ExchangeCalls& calls = {}) noexcept;

/// Removes the old tree, or a staged one that was never installed. Call it once this program has
/// started. Blocks while files are removed.
void confirmInstalledTree(const std::filesystem::path& root,
                          const ExchangeCalls& calls = {}) noexcept;

} // namespace kelo::updater
