#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace kelo::posix {

/// What the program tells of its own course to whoever measures it. The names are all that is ever
/// told, so no address and no secret can get out.
enum class Moment {
    mainEntered,
    busConnected,   ///< and the program's name taken there
    toolkitStarted, ///< the display is open
    windowMapped,
    viewMade,   ///< a web view, with its web process asked for
    frameBegan, ///< of a main window
    frameEnded, ///< so much of it as happens in this process
    loadStarted,
    loadCommitted, ///< the first bytes of the page have arrived
    loadFinished,
    count, ///< no moment: how many there are
};

inline constexpr std::array<std::string_view, static_cast<std::size_t>(Moment::count)> momentNames{
    "mainEntered", "busConnected", "toolkitStarted", "windowMapped",  "viewMade",
    "frameBegan",  "frameEnded",   "loadStarted",    "loadCommitted", "loadFinished",
};

/// Has moments told from now on, if KELO_MOMENTS is the number of an inherited file descriptor that
/// is open for writing: 3 or more. Nothing is told otherwise. Call it first in main(), before
/// anything of ours can have that number: removes the variable, and keeps the descriptor from
/// programs that are started later.
void followMoments();

bool momentsAreFollowed();

namespace detail {
/// -1: nobody has asked.
extern int momentSink;
void tellMoment(Moment moment);
} // namespace detail

/// Tells that this is now: the moment's name, a space, the nanoseconds of CLOCK_MONOTONIC, a line
/// feed. From any thread. Costs a comparison while nobody has asked.
inline void mark(Moment moment) {
    if (detail::momentSink >= 0) [[unlikely]]
        detail::tellMoment(moment);
}

} // namespace kelo::posix
