#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace kelo::updater {

/// The moment that an RFC 822 date names, as feeds write it: "Sat, 21 Nov 2026 08:30:00 +0100". The
/// weekday and the seconds may be missing; the zone is an offset, "GMT", "UT", "UTC" or "Z".
/// Nothing for any other text.
std::optional<std::chrono::sys_seconds> parsePublicationDate(std::string_view text);

} // namespace kelo::updater
