#pragma once

#include "base/Url.h"
#include "platform/Bundle.h"
#include "updater/archive/Signature.h"

#include <chrono>
#include <optional>
#include <string>

namespace kelo::updater {

/// What the bundle says about updates. A value of a wrong type counts as absent.
struct UpdaterSettings {
    explicit UpdaterSettings(const platform::InformationDictionary& dictionary);

    /// The feed; nothing when there is none, or none that is fetched over https.
    std::optional<Url> feed;
    /// There is an address, but not one that may be used.
    bool feedRefused = false;
    /// Nothing when there is none, or none that is a key.
    std::optional<PublicKey> publicKey;

    /// Whether to check automatically; nothing: the user is asked.
    std::optional<bool> automaticChecks;
    /// Between two automatic checks, an hour at least; zero: never.
    std::chrono::seconds checkInterval{};
    /// Whether what was found is downloaded without a question first.
    bool downloadsUnasked = false;

    std::string programName;
    /// Compared with what is offered; empty when the bundle does not say.
    std::string installedVersion;
    /// Shown to people.
    std::string installedDisplayVersion;

    bool isSetUp() const { return feed && !installedVersion.empty(); }
};

} // namespace kelo::updater
