#pragma once

#include <string_view>

namespace kelo::log {

/// Where the developer's log is. It is never rotated, truncated or deleted.
inline constexpr std::string_view debugLogPath = "/tmp/kelo-debug.log";

/// Appends "[2026-03-01 09:05:07 +0000] message" and a line feed to the debug log, creating the
/// file if need be. The message is written as it is; one that is not well-formed UTF-8 is not
/// written. Every failure is silent: a log must not get in the way of what it tells about. Main
/// thread only.
void debugLog(std::string_view message);

} // namespace kelo::log
