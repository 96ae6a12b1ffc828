#pragma once

#include "posix/FileDescriptor.h"
#include "updater/tree/TreeExchange.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace kelo::updater {

/// The watcher's place in a tree. It runs as
///
///   WATCHER relaunch ROOT PROGRAM [ARGUMENT...]   when the descriptor below becomes readable,
///   starts
///                                                 the program and watches it
///   WATCHER watch ROOT PROGRAM [ARGUMENT...]      watches the process that it stands for
///
/// and is the one of the tree before the update, which is known to work here.
inline constexpr const char* startWatcherPath = "libexec/kelo/kelo-watch-start";

/// The descriptor by which the watcher learns of the end of the process before it.
inline constexpr int endedDescriptor = 3;

struct WatchDeadlines {
    /// For the process before to end.
    std::chrono::milliseconds end = std::chrono::minutes(5);
    /// For a start to be confirmed. Several times as long as a start takes on a busy machine.
    std::chrono::milliseconds confirmation = std::chrono::minutes(1);
};

enum class WatchResult {
    confirmed, ///< or left to a later start
    takenBack, ///< the tree before the update is in its place again, and its program is to be run
    notBegun,  ///< the process before did not end in time
};

/// Watches the first start of an updated tree. If the program ends before its start was confirmed,
/// or is not confirmed in time (it is killed then), puts the tree before it back.
///   ended    readable once the process has ended: the one before for `start`, else the watched one
///   start    the program and its arguments, to be started first; empty: it runs already
/// Blocks.
WatchResult watchStart(const std::filesystem::path& root, posix::FileDescriptor ended,
                       const std::vector<std::string>& start, const WatchDeadlines& deadlines = {},
                       const ExchangeCalls& calls = {});

} // namespace kelo::updater
