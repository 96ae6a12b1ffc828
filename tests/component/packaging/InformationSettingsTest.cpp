#include "component/packaging/Packages.h"

#include <gmock/gmock.h>

namespace kelo::tests {

namespace {

using testing::HasSubstr;

const std::string goodKey = "rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs=";

/// The output of configuring with these settings in addition to valid ones.
Outcome check(const std::string& settings) {
    return runCommand("'" KELO_CMAKE "' -DKELO_VERSION=1.4.2 -DKELO_BUILD_NUMBER=57 "
                      "-DKELO_UPDATE_CHECK_INTERVAL=86400 -DKELO_UPDATE_ALLOWS_AUTOMATIC=ON "
                      "-DKELO_UPDATE_AUTOMATIC_CHECKS=ask " +
                      settings + " -P '" KELO_SOURCE_FOLDER "/cmake/CheckInformation.cmake'");
}

void expectRefused(const std::string& settings, const std::string& because) {
    const auto outcome = check(settings);
    EXPECT_NE(outcome.status, 0) << settings;
    std::string flat = outcome.output;
    std::erase(flat, '\n');
    EXPECT_THAT(flat, HasSubstr(because)) << settings;
}

} // namespace

TEST(InformationSettings, MayLeaveUpdatesOut) {
    EXPECT_EQ(check("").status, 0);
}

TEST(InformationSettings, MayNameAFeedAndItsKey) {
    const auto outcome = check("-DKELO_UPDATE_FEED=https://kelo.example/appcast.xml "
                               "-DKELO_UPDATE_PUBLIC_KEY=" +
                               goodKey);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST(InformationSettings, MayNameAPreRelease) {
    for (const auto* version : {"1.4", "1.5b2", "1.5rc", "1.5rc1.2"}) {
        const auto outcome = check(std::string("-DKELO_VERSION=") + version);
        EXPECT_EQ(outcome.status, 0) << outcome.output;
    }
}

TEST(InformationSettings, TakeFeedsOverHttpsOnly) {
    for (const auto* feed :
         {"http://kelo.example/appcast.xml", "file:///appcast.xml", "appcast.xml",
          "'https://kelo.example/a b'", "'https://kelo.example/<x>'"})
        expectRefused(std::string("-DKELO_UPDATE_FEED=") + feed +
                          " -DKELO_UPDATE_PUBLIC_KEY=" + goodKey,
                      "KELO_UPDATE_FEED");
}

TEST(InformationSettings, RefuseAFeedWithoutAKeyAndAKeyThatIsNone) {
    expectRefused("-DKELO_UPDATE_FEED=https://kelo.example/appcast.xml",
                  "KELO_UPDATE_PUBLIC_KEY is not");
    expectRefused("-DKELO_UPDATE_PUBLIC_KEY=short", "no Ed25519 key");
    expectRefused("-DKELO_UPDATE_PUBLIC_KEY='" + std::string(43, '<') + "='", "no Ed25519 key");
}

TEST(InformationSettings, RefuseWhatWouldBreakTheDictionaryOrTheOrderOfVersions) {
    expectRefused("-DKELO_VERSION='1.0<'", "KELO_VERSION");
    for (const auto* version :
         {"v1", "1.0~b1", "1.0-b1", "1.0+1", "1.0.b1", "1.0b.1", "1..0", "1.0b1c"})
        expectRefused(std::string("-DKELO_VERSION=") + version, "KELO_VERSION");
    expectRefused("-DKELO_MINIMUM_SYSTEM=deb12", "KELO_MINIMUM_SYSTEM");
    expectRefused("-DKELO_BUILD_NUMBER=5b", "KELO_BUILD_NUMBER");
    expectRefused("-DKELO_UPDATE_CHECK_INTERVAL=60", "3600");
    expectRefused("-DKELO_UPDATE_CHANNELS='<beta>'", "KELO_UPDATE_CHANNELS");
    expectRefused("-DKELO_UPDATE_AUTOMATIC_CHECKS=maybe", "ask, on or off");
}

} // namespace kelo::tests
