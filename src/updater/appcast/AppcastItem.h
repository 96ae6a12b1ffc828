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
    /// In bytes, as announced; nothing when it is missing or no number.
    std::optional<std::uint64_t> length = std::nullopt;
    std::string type = {};
    /// As written, not yet decoded.
    std::optional<std::string> signature = std::nullopt;
    /// "linux", "linux-x86_64", "macos"...; nothing: for every system.
    std::optional<std::string> system = std::nullopt;
};

struct CriticalUpdate {
    /// Critical only for installed versions below it; nothing: for all.
    std::optional<std::string> belowVersion = std::nullopt;
};

struct InformationalUpdate {
    /// Only for these installed versions, and for those below one of the others; both empty: for
    /// all.
    std::vector<std::string> versions = {};
    std::vector<std::string> belowVersions = {};
};

/// One release, as a feed describes it. Texts are as written, with blanks around them trimmed.
struct AppcastItem {
    std::string version; ///< never empty; compared with compareVersions()
    std::string shortVersion = {};
    std::string title = {};
    std::optional<Url> link = std::nullopt; ///< https
    std::optional<std::chrono::sys_seconds> published = std::nullopt;

    std::string description = {}; ///< release notes inside the feed
    NotesFormat descriptionFormat = NotesFormat::html;
    std::optional<Url> releaseNotesLink = std::nullopt; ///< https

    std::string minimumSystemVersion = {};
    std::string maximumSystemVersion = {};
    std::vector<std::string> hardwareRequirements = {};
    /// Installed versions below it see a major upgrade, which is never installed unasked.
    std::string minimumAutoupdateVersion = {};
    /// Installed versions below it cannot take this update.
    std::string minimumUpdateVersion = {};
    std::string ignoreSkippedUpgradesBelowVersion = {};

    std::optional<CriticalUpdate> critical = std::nullopt;
    std::optional<InformationalUpdate> informational = std::nullopt;
    std::string channel = {}; ///< empty: the default one
    std::optional<std::chrono::seconds> phasedRolloutInterval = std::nullopt;
    std::optional<Enclosure> enclosure = std::nullopt;

    /// What people are shown.
    const std::string& displayVersion() const {
        return shortVersion.empty() ? version : shortVersion;
    }
};

} // namespace kelo::updater
