#pragma once

#include "updater/tree/TreeExchange.h"

#include <filesystem>

namespace kelo::updater {

/// Undoes an exchange piece by piece that was cut off, in either direction, so that the tree's
/// program is there to be run. Does nothing if none was, if a process is at it, or if the root is
/// no tree that updates replace. Needs no library that a tree brings along, for these may be
/// missing. Never fails. Blocks.
void undoExchangeThatWasCutOff(const std::filesystem::path& root,
                               const ExchangeCalls& calls = {}) noexcept;

} // namespace kelo::updater
