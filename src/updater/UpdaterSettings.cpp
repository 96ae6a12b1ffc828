#include "updater/UpdaterSettings.h"

#include "updater/UpdaterState.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <variant>

namespace kelo::updater {

namespace {

using platform::InformationDictionary;
using platform::informationValue;

std::string text(const InformationDictionary& dictionary, std::string_view key) {
    return informationValue<std::string>(dictionary, key).value_or("");
}

std::chrono::seconds intervalIn(const InformationDictionary& dictionary) {
    constexpr std::chrono::seconds shortest = std::chrono::hours(1);
    constexpr std::chrono::seconds usual = std::chrono::hours(24);
    // Small enough for sums of dates not to overflow.
    constexpr std::chrono::seconds longest = std::chrono::hours(24 * 365 * 100);
    const auto seconds = informationValue<std::int64_t>(dictionary, "SUScheduledCheckInterval");
    if (!seconds)
        return usual;
    if (*seconds == 0)
        return std::chrono::seconds(0);
    return std::clamp(std::chrono::seconds(*seconds), shortest, longest);
}

} // namespace

UpdaterSettings::UpdaterSettings(const InformationDictionary& dictionary)
    : requiresSignedFeed(informationValue<bool>(dictionary, "SURequireSignedFeed").value_or(false)),
      automaticChecks(informationValue<bool>(dictionary, "SUEnableAutomaticChecks")),
      checkInterval(intervalIn(dictionary)),
      downloadsUnasked(
          informationValue<bool>(dictionary, "SUAutomaticallyUpdate").value_or(false) &&
          informationValue<bool>(dictionary, "SUAllowsAutomaticUpdates").value_or(true)),
      channels(words(text(dictionary, "KeloUpdateChannels"))),
      programName(text(dictionary, "CFBundleName")),
      installedVersion(text(dictionary, "CFBundleVersion")),
      installedDisplayVersion(text(dictionary, "CFBundleShortVersionString")) {
    const std::string address = text(dictionary, "SUFeedURL");
    feed = Url::parse(address);
    if (feed && feed->scheme() != "https")
        feed.reset();
    feedRefused = !address.empty() && !feed;
    publicKey = parsePublicKey(text(dictionary, "SUPublicEDKey"));
    if (programName.empty())
        programName = "Kelo";
    if (installedDisplayVersion.empty())
        installedDisplayVersion = installedVersion;
}

} // namespace kelo::updater
