#pragma once

#include "base/Url.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelo::updater {

enum class NotesFormat { html, plainText, markdown };

/// The archive that an item offers.
struct Enclosure {
    Url url; ///< https
    /// In bytes, as announced; nothing if it is missing or not a number.
    std::optional<std::uint64_t> length = std::nullopt;
    std::string type = {};
    /// Base64, not decoded yet.
    std::optional<std::string> signature = std::nullopt;
    /// "linux", "linux-x86_64", "macos"...; nothing: all systems.
    std::optional<std::string> system = std::nullopt;
};

/// The update is critical.
struct CriticalUpdate {
    /// Only for installed versions below this one; nothing: for all.
    std::optional<std::string> belowVersion = std::nullopt;
};

/// The update is only announced, not installed.
struct InformationalUpdate {
    /// Only for these installed versions and those below one of belowVersions; both empty: for all.
    std::vector<std::string> versions = {};
    std::vector<std::string> belowVersions = {};
};

/// One release in a feed. Texts are trimmed.
struct AppcastItem {
    std::string version; ///< never empty; compared with compareVersions()
    std::string shortVersion = {};
    std::string title = {};
    std::optional<Url> link = std::nullopt; ///< https
    std::optional<std::chrono::sys_seconds> published = std::nullopt;

    std::string description = {}; ///< release notes in the feed itself
    NotesFormat descriptionFormat = NotesFormat::html;
    std::optional<Url> releaseNotesLink = std::nullopt; ///< https

    std::string minimumSystemVersion = {};
    std::string maximumSystemVersion = {};
    std::vector<std::string> hardwareRequirements = {};
    /// For installed versions below it this is a major upgrade, never installed without asking.
    std::string minimumAutoupdateVersion = {};
    /// Installed versions below it cannot be updated to this one.
    std::string minimumUpdateVersion = {};
    std::string ignoreSkippedUpgradesBelowVersion = {};

    std::optional<CriticalUpdate> critical = std::nullopt;
    std::optional<InformationalUpdate> informational = std::nullopt;
    std::string channel = {}; ///< empty: the default channel
    std::optional<std::chrono::seconds> phasedRolloutInterval = std::nullopt;
    std::optional<Enclosure> enclosure = std::nullopt;

    /// The version that users see.
    const std::string& displayVersion() const {
        return shortVersion.empty() ? version : shortVersion;
    }
};

} // namespace kelo::updater
