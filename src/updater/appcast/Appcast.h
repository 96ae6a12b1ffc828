#pragma once

#include "base/Bytes.h"
#include "updater/appcast/AppcastItem.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kelo::updater {

/// Longest feed that is read.
inline constexpr std::size_t appcastLimit = std::size_t(4) * 1024 * 1024;

/// A feed of releases.
struct Appcast {
    /// In the order of the feed.
    std::vector<AppcastItem> items;
    /// Why other items were left out, a line each, for the journal.
    std::vector<std::string> problems;
};

/// Reads a feed (RSS 2.0 with the elements of an appcast). Fetches nothing, expands no entities of
/// its own making and takes no document type declaration. An item that makes no sense is left out;
/// addresses count only if they are https. Fails with an UpdateError of kind feed for what is no
/// feed at all.
Appcast parseAppcast(ByteView bytes);

} // namespace kelo::updater
