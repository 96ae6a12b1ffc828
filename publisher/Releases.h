#pragma once

#include "publisher/Feed.h"
#include "publisher/Package.h"
#include "publisher/SigningKey.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelo::publisher {

/// The keys that releases are signed with.
struct ReleaseKeys {
    SigningKey current;
    /// While the publisher changes to another key: that one.
    std::optional<SigningKey> next = std::nullopt;
};

/// A package in the folder, and what the feed will say of it.
struct Release {
    std::filesystem::path path;
    Package package;
    FeedItem item;
    bool isSignedWithNext = false; ///< rather than with the current key
};

/// Gives each item its signature, newest release first. An item of the old feed keeps the signature
/// that it has there if that is valid. `replace`: also sign packages that were changed since.
///
/// While there is a next key, the first release that was built with it is signed with the current
/// one, so that every copy can take it. Those after it are signed with the next key, and offered to
/// copies that have the first one or a later release.
///
/// Throws Failure if a package was built with a third key, or changed since it was in the old feed.
void signReleases(std::vector<Release>& releases, const ReleaseKeys& keys,
                  const std::vector<OldItem>& oldItems, bool replace);

/// What will surprise the publisher: build numbers that repeat or fall, releases that some copies
/// will never be offered. One sentence each.
std::vector<std::string> remarksOn(const std::vector<Release>& releases,
                                   const std::vector<OldItem>& oldItems, const ReleaseKeys& keys);

/// Throws Failure if a copy of Kelo would leave one of the items out of this feed, or read another
/// address, length or signature than was meant.
void requireReadable(const std::vector<FeedItem>& items, const std::string& feed);

} // namespace kelo::publisher
