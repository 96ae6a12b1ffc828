#pragma once

#include <string_view>

namespace kelo::log {

/// Path of the developer's log, which is never rotated, truncated or deleted.
inline constexpr std::string_view debugLogPath = "/tmp/kelo-debug.log";

/// Appends "[2026-03-01 09:05:07 +0000] message" and a line feed to the debug log, creating the
/// file if necessary. The message is written unchanged; a message that is not well-formed UTF-8 is
/// not written. Failures are silent, because logging must not disturb the program. Main thread
/// only.
void debugLog(std::string_view message);

} // namespace kelo::log
