#include "updater/UpdaterSettings.h"

#include <gtest/gtest.h>

namespace kelo::test {

using platform::InformationDictionary;
using updater::UpdaterSettings;

namespace {

const std::string key = "rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs=";

std::chrono::seconds interval(platform::InformationValue value) {
    return UpdaterSettings({{"SUScheduledCheckInterval", std::move(value)}}).checkInterval;
}

} // namespace

TEST(UpdaterSettings, EmptyBundleSetsNothingUp) {
    const UpdaterSettings settings({});
    EXPECT_FALSE(settings.isSetUp());
    EXPECT_FALSE(settings.feedRefused);
    EXPECT_FALSE(settings.publicKey);
    EXPECT_FALSE(settings.automaticChecks);
    EXPECT_EQ(settings.checkInterval, std::chrono::hours(24));
    EXPECT_FALSE(settings.downloadsUnasked);
    EXPECT_EQ(settings.programName, "Kelo");
}

TEST(UpdaterSettings, AreTakenFromTheBundle) {
    const UpdaterSettings settings({{"SUFeedURL", std::string("https://example.com/feed.xml")},
                                    {"SUPublicEDKey", " " + key + "\n"},
                                    {"SUEnableAutomaticChecks", true},
                                    {"SUScheduledCheckInterval", std::int64_t(7200)},
                                    {"SUAutomaticallyUpdate", true},
                                    {"CFBundleName", std::string("Assistant")},
                                    {"CFBundleVersion", std::string("57")},
                                    {"CFBundleShortVersionString", std::string("1.4.2")}});
    EXPECT_TRUE(settings.isSetUp());
    EXPECT_EQ(settings.feed->absoluteString(), "https://example.com/feed.xml");
    EXPECT_TRUE(settings.publicKey);
    EXPECT_EQ(settings.automaticChecks, true);
    EXPECT_EQ(settings.checkInterval, std::chrono::hours(2));
    EXPECT_TRUE(settings.downloadsUnasked);
    EXPECT_EQ(settings.programName, "Assistant");
    EXPECT_EQ(settings.installedVersion, "57");
    EXPECT_EQ(settings.installedDisplayVersion, "1.4.2");
}

TEST(UpdaterSettings, ValueOfWrongTypeCountsAsAbsent) {
    const UpdaterSettings settings({{"SUFeedURL", true},
                                    {"SUPublicEDKey", std::int64_t(5)},
                                    {"SUEnableAutomaticChecks", std::string("YES")},
                                    {"SUScheduledCheckInterval", std::string("7200")},
                                    {"SUAutomaticallyUpdate", std::int64_t(1)},
                                    {"CFBundleVersion", 1.5}});
    EXPECT_FALSE(settings.feed);
    EXPECT_FALSE(settings.feedRefused);
    EXPECT_FALSE(settings.publicKey);
    EXPECT_FALSE(settings.automaticChecks);
    EXPECT_EQ(settings.checkInterval, std::chrono::hours(24));
    EXPECT_FALSE(settings.downloadsUnasked);
    EXPECT_EQ(settings.installedVersion, "");
}

TEST(UpdaterSettings, IntervalIsAnHourAtLeastAndZeroIsNever) {
    EXPECT_EQ(interval(std::int64_t(0)), std::chrono::seconds(0));
    EXPECT_EQ(interval(std::int64_t(1)), std::chrono::hours(1));
    EXPECT_EQ(interval(std::int64_t(-5)), std::chrono::hours(1));
    EXPECT_EQ(interval(std::int64_t(3600)), std::chrono::hours(1));
    EXPECT_EQ(interval(std::int64_t(3601)), std::chrono::seconds(3601));
    EXPECT_LE(interval(INT64_MAX), std::chrono::hours(24 * 365 * 100));
}

TEST(UpdaterSettings, FeedThatIsNotHttpsIsRefused) {
    for (const char* address : {"http://example.com/feed.xml", "file:///feed.xml", "feed.xml"}) {
        const UpdaterSettings settings({{"SUFeedURL", std::string(address)}});
        EXPECT_FALSE(settings.feed) << address;
        EXPECT_TRUE(settings.feedRefused) << address;
    }
}

TEST(UpdaterSettings, KeyOfWrongLengthIsNone) {
    EXPECT_FALSE(UpdaterSettings({{"SUPublicEDKey", std::string("Zm9v")}}).publicKey);
}

TEST(UpdaterSettings, UnaskedDownloadsCanBeForbidden) {
    EXPECT_FALSE(
        UpdaterSettings({{"SUAutomaticallyUpdate", true}, {"SUAllowsAutomaticUpdates", false}})
            .downloadsUnasked);
    EXPECT_TRUE(
        UpdaterSettings({{"SUAutomaticallyUpdate", true}, {"SUAllowsAutomaticUpdates", true}})
            .downloadsUnasked);
}

TEST(UpdaterSettings, WithoutAVersionNothingCanBeCompared) {
    EXPECT_FALSE(UpdaterSettings({{"SUFeedURL", std::string("https://example.com/feed.xml")},
                                  {"CFBundleShortVersionString", std::string("1.0")}})
                     .isSetUp());
}

TEST(UpdaterSettings, RequireASignedFeedOnlyWhenTheBundleSaysSo) {
    using updater::UpdaterSettings;
    EXPECT_FALSE(UpdaterSettings({}).requiresSignedFeed);
    EXPECT_TRUE(UpdaterSettings({{"SURequireSignedFeed", true}}).requiresSignedFeed);
    EXPECT_FALSE(UpdaterSettings({{"SURequireSignedFeed", false}}).requiresSignedFeed);
}

} // namespace kelo::test
