#pragma once

#include "base/Bytes.h"
#include "updater/appcast/AppcastItem.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kelo::updater {

/// Longest feed that is read, in bytes.
inline constexpr std::size_t appcastLimit = std::size_t(4) * 1024 * 1024;

/// A feed of releases.
struct Appcast {
    /// In the order of the feed.
    std::vector<AppcastItem> items;
    /// Why other items were left out: one line each, for the log.
    std::vector<std::string> problems;
};

/// Parses a feed (RSS 2.0 with the elements of an appcast). Fetches nothing and refuses a document
/// type declaration, and so expands no entities that the feed defines. Invalid items are left out;
/// URLs that are not https are ignored. Throws an UpdateError of kind feed if the bytes are not a
/// feed.
Appcast parseAppcast(ByteView bytes);

} // namespace kelo::updater
