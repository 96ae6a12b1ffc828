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

/// One package, as the feed tells of it.
struct FeedItem {
    std::string version;
    std::string shortVersion;
    std::string system;
    std::string fileName;
    std::string url;
    std::string pageUrl; ///< or empty
    std::string signature;
    std::uint64_t length = 0;
    std::optional<Notes> notes;
};

/// The feed for these items, in this order. Of the feed that was there (empty: none), an item of
/// the same version and file name keeps its date and everything that this program does not write
/// itself, such as a channel or a mark of importance. The others get the date given. Throws Failure
/// when the old feed cannot be read.
std::string writeFeed(const std::vector<FeedItem>& items, const std::string& oldFeed,
                      std::chrono::sys_seconds now);

/// File names that the old feed has an item for and the new one has not.
std::vector<std::string> droppedFiles(const std::vector<FeedItem>& items,
                                      const std::string& oldFeed);

} // namespace kelo::publisher
