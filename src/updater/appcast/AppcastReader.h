#pragma once

#include "updater/appcast/AppcastItem.h"
#include "updater/appcast/XmlDocument.h"

#include <chrono>
#include <optional>
#include <string_view>

namespace kelo::updater {

/// Reads an "item" element. Throws std::invalid_argument, with the reason for the log, for an item
/// that cannot be an update: it has no version, has neither archive nor link, has an archive URL
/// that is not https, or is a delta to one old version.
AppcastItem readAppcastItem(const XmlElement& element);

/// Parses an RFC 822 date as feeds write it: "Sat, 21 Nov 2026 08:30:00 +0100". The weekday and the
/// seconds may be missing; the zone is an offset, "GMT", "UT", "UTC" or "Z". Nothing for any other
/// text.
std::optional<std::chrono::sys_seconds> parsePublicationDate(std::string_view text);

} // namespace kelo::updater
