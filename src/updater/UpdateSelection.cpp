#include "updater/UpdateSelection.h"

#include "updater/appcast/Version.h"

#include <algorithm>

namespace kelo::updater {

namespace {

constexpr std::uint32_t rolloutGroups = 7;

bool isForSystem(const AppcastItem& item, const SystemDescription& system) {
    if (!item.enclosure || !item.enclosure->system)
        return true;
    const std::string& wanted = *item.enclosure->system;
    return wanted == system.name || wanted == system.name + "-" + system.architecture;
}

bool isForHardware(const AppcastItem& item, const SystemDescription& system) {
    const auto& wanted = item.hardwareRequirements;
    // Other systems have another name for the same processors.
    const std::string otherName = system.architecture == "aarch64" ? "arm64" : system.architecture;
    return wanted.empty() ||
           std::any_of(wanted.begin(), wanted.end(), [&](const std::string& name) {
               return name == system.architecture || name == otherName;
           });
}

bool isInChannel(const AppcastItem& item, const std::vector<std::string>& channels) {
    return item.channel.empty() ||
           std::find(channels.begin(), channels.end(), item.channel) != channels.end();
}

// Items without a system may come from publishers for other systems, whose version numbers cannot
// be compared with ours.
bool systemFits(const AppcastItem& item, const SystemDescription& system) {
    const bool meansUs = item.enclosure && item.enclosure->system;
    if (!meansUs || system.version.empty())
        return true;
    const bool tooOld =
        !item.minimumSystemVersion.empty() && isOlder(system.version, item.minimumSystemVersion);
    const bool tooNew =
        !item.maximumSystemVersion.empty() && isOlder(item.maximumSystemVersion, system.version);
    return !tooOld && !tooNew;
}

bool isCritical(const AppcastItem& item, const std::string& installed) {
    return item.critical &&
           (!item.critical->belowVersion || isOlder(installed, *item.critical->belowVersion));
}

bool isInformational(const AppcastItem& item, const std::string& installed) {
    if (!item.enclosure)
        return true;
    if (!item.informational)
        return false;
    const auto& [versions, belowVersions] = *item.informational;
    const auto same = [&](const std::string& version) {
        return compareVersions(installed, version) == 0;
    };
    const auto below = [&](const std::string& version) { return isOlder(installed, version); };
    return (versions.empty() && belowVersions.empty()) ||
           std::any_of(versions.begin(), versions.end(), same) ||
           std::any_of(belowVersions.begin(), belowVersions.end(), below);
}

bool isMajor(const AppcastItem& item, const std::string& installed) {
    return !item.minimumAutoupdateVersion.empty() &&
           isOlder(installed, item.minimumAutoupdateVersion);
}

bool isSkipped(const AppcastItem& item, const SelectionRules& rules) {
    const UpdaterState& state = rules.state;
    if (rules.kind == CheckKind::userInitiated)
        return false;
    if (!isMajor(item, rules.installedVersion))
        return !state.skippedVersion.empty() && !isOlder(state.skippedVersion, item.version);
    if (state.skippedMajorVersion.empty() ||
        isOlder(state.skippedMajorVersion, item.minimumAutoupdateVersion))
        return false;
    return item.ignoreSkippedUpgradesBelowVersion.empty() ||
           !isOlder(state.skippedMajorRelease, item.ignoreSkippedUpgradesBelowVersion);
}

bool isRolledOut(const AppcastItem& item, const SelectionRules& rules) {
    if (rules.kind == CheckKind::userInitiated || !item.phasedRolloutInterval || !item.published ||
        isCritical(item, rules.installedVersion))
        return true;
    const std::uint32_t group = rules.state.rolloutNumber.value_or(0) % rolloutGroups;
    return rules.now - *item.published >= *item.phasedRolloutInterval * group;
}

bool isCandidate(const AppcastItem& item, const SelectionRules& rules) {
    const bool canBeTaken = item.minimumUpdateVersion.empty() ||
                            !isOlder(rules.installedVersion, item.minimumUpdateVersion);
    return isOlder(rules.installedVersion, item.version) && canBeTaken &&
           isForSystem(item, rules.system) && isForHardware(item, rules.system) &&
           isInChannel(item, rules.channels) && isRolledOut(item, rules) && !isSkipped(item, rules);
}

/// The newest so far, the first of equals.
void keepNewest(const AppcastItem*& newest, const AppcastItem& item) {
    if (!newest || isOlder(newest->version, item.version))
        newest = &item;
}

} // namespace

Selection selectUpdate(const Appcast& appcast, const SelectionRules& rules) {
    const AppcastItem* minor = nullptr;
    const AppcastItem* major = nullptr;
    const AppcastItem* unsupported = nullptr;
    for (const AppcastItem& item : appcast.items) {
        if (!isCandidate(item, rules))
            continue;
        if (!systemFits(item, rules.system))
            keepNewest(unsupported, item);
        else
            keepNewest(isMajor(item, rules.installedVersion) ? major : minor, item);
    }

    Selection selection;
    if (const AppcastItem* best = minor ? minor : major)
        selection.update =
            SelectedUpdate{*best, best == major, isCritical(*best, rules.installedVersion),
                           isInformational(*best, rules.installedVersion)};
    else if (unsupported)
        selection.unsupported = *unsupported;
    return selection;
}

void skip(const SelectedUpdate& update, UpdaterState& state) {
    if (update.major) {
        state.skippedMajorVersion = update.item.minimumAutoupdateVersion;
        state.skippedMajorRelease = update.item.version;
    } else {
        state.skippedVersion = update.item.version;
    }
}

void forgetSkip(const SelectedUpdate& update, UpdaterState& state) {
    if (update.major) {
        state.skippedMajorVersion.clear();
        state.skippedMajorRelease.clear();
    } else {
        state.skippedVersion.clear();
    }
}

} // namespace kelo::updater
