#pragma once

#include "base/Url.h"
#include "platform/Bundle.h"
#include "updater/archive/Signature.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kelo::updater {

/// The bundle's settings for updates. A value of the wrong type counts as absent.
struct UpdaterSettings {
    explicit UpdaterSettings(const platform::InformationDictionary& dictionary);

    /// URL of the feed; nothing if it is absent or not https.
    std::optional<Url> feed;
    /// There is a URL, but it is not https.
    bool feedRefused = false;
    /// Nothing if it is absent or not a key.
    std::optional<PublicKey> publicKey;
    /// Whether the feed itself has to be signed with the key.
    bool requiresSignedFeed = false;

    /// Whether to check automatically; nothing: ask the user.
    std::optional<bool> automaticChecks;
    /// Time between two automatic checks, at least an hour; zero: no automatic checks.
    std::chrono::seconds checkInterval{};
    /// Whether scheduled checks download and stage an update before they ask.
    bool downloadsUnasked = false;

    /// Channels that releases are taken from besides the default one.
    std::vector<std::string> channels;

    std::string programName;
    /// Compared with the versions in the feed; empty if the bundle does not name one.
    std::string installedVersion;
    /// The version that users see.
    std::string installedDisplayVersion;

    bool isSetUp() const { return feed && !installedVersion.empty(); }
};

} // namespace kelo::updater
