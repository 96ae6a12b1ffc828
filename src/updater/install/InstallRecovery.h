#pragma once

#include "updater/install/TreeExchange.h"

#include <filesystem>

/// What a program does at its start about updates of its own tree that were under way when another
/// process ended. The root is that of the tree it runs from. Both look for one name beside the tree
/// and do nothing when it is not there, or when a living process holds it. They never fail.
namespace kelo::updater {

/// If pieces were changing hands, gives the old program, which is this one, its pieces back. For
/// the very start, before the program reads anything of its tree.
void repairInstalledTree(const std::filesystem::path& root,
                         const ExchangeCalls& calls = {}) noexcept;

/// This program has started: removes the old tree, or what was staged and never installed. Blocks
/// for as long as it takes to remove them.
void confirmInstalledTree(const std::filesystem::path& root,
                          const ExchangeCalls& calls = {}) noexcept;

} // namespace kelo::updater
