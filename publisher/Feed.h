#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelo::publisher {

enum class NotesForm { plainText, markdown };

struct Notes {
    std::string text;
    NotesForm form = NotesForm::plainText;
};

/// One package in the feed.
struct FeedItem {
    std::string version;
    std::string shortVersion;
    std::string system;
    std::string minimumSystem; ///< version of the C library; may be empty
    std::string fileName;
    std::string url;
    std::string pageUrl; ///< may be empty
    /// Only copies of this version or a newer one can take it; empty: all.
    std::string minimumUpdateVersion = {};
    std::string signature;
    std::uint64_t length = 0;
    std::optional<Notes> notes;
};

/// Writes a feed of these items, in this order. An item with the same version and file name in the
/// old feed (empty: none) keeps its date and every element that this program does not write, such
/// as a channel or criticalUpdate; also a minimumSystemVersion, if the item has none itself. The
/// date of new items is now. Throws Failure if the old feed cannot be read.
std::string writeFeed(const std::vector<FeedItem>& items, const std::string& oldFeed,
                      std::chrono::sys_seconds now);

/// What a feed says of a package.
struct OldItem {
    std::string fileName;
    std::string version;
    std::string shortVersion; ///< may be empty
    std::string signature;    ///< may be empty
};

/// The packages in a feed (empty: none). Throws Failure if it cannot be read.
std::vector<OldItem> packagesIn(const std::string& feed);

/// File names that have an item in the old feed, but not among these items.
std::vector<std::string> droppedFiles(const std::vector<FeedItem>& items,
                                      const std::vector<OldItem>& oldItems);

} // namespace kelo::publisher
