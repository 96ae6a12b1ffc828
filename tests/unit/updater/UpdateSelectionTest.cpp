#include "updater/UpdateSelection.h"

#include "unit/updater/Feed.h"

#include <gtest/gtest.h>

namespace kelo::test {

using updater::CheckKind;
using updater::Selection;
using updater::SelectionRules;

namespace {

class UpdateSelection : public testing::Test {
protected:
    UpdateSelection() {
        rules.installedVersion = "1.0";
        rules.system = {"linux", "x86_64", "2.36"};
        rules.now = std::chrono::sys_days(std::chrono::year(2026) / 11 / 21);
    }

    Selection select(const std::string& items) const {
        return selectUpdate(appcastOf(items), rules);
    }

    /// The version that is offered; empty: none.
    std::string offered(const std::string& items) const {
        const Selection selection = select(items);
        return selection.update ? selection.update->item.version : "";
    }

    static std::string element(std::string_view name, std::string_view text) {
        return "<sparkle:" + std::string(name) + ">" + std::string(text) +
               "</sparkle:" + std::string(name) + ">";
    }
    static std::string forSystem(std::string_view version, std::string_view system,
                                 std::string_view more = "") {
        return release(version, more, "sparkle:os=\"" + std::string(system) + "\"");
    }

    SelectionRules rules;
};

} // namespace

TEST_F(UpdateSelection, TakesTheNewestWhereverItStands) {
    EXPECT_EQ(offered(release("1.1") + release("1.10") + release("1.9")), "1.10");
    EXPECT_EQ(offered(""), "");
}

TEST_F(UpdateSelection, TakesTheFirstOfEquals) {
    const Selection selection =
        select(release("1.1", "<title>a</title>") + release("1.1.0", "<title>b</title>"));
    EXPECT_EQ(selection.update->item.version, "1.1");
}

TEST_F(UpdateSelection, NeverTakesAnOlderOrEqualVersion) {
    EXPECT_EQ(offered(release("1.0") + release("0.9") + release("1.0.0") + release("1.0rc1")), "");
    rules.kind = CheckKind::userInitiated;
    EXPECT_EQ(offered(release("1.0") + release("0.9") + release("1.0-5")), "");
}

TEST_F(UpdateSelection, LeavesOutOtherSystems) {
    EXPECT_EQ(offered(forSystem("1.1", "macos") + forSystem("1.2", "windows-x64") +
                      forSystem("1.3", "linux-aarch64") + forSystem("1.4", "Linux")),
              "");
    EXPECT_EQ(offered(forSystem("1.1", "linux")), "1.1");
    EXPECT_EQ(offered(forSystem("1.1", "linux-x86_64")), "1.1");
    EXPECT_EQ(offered(release("1.1")), "1.1");
}

TEST_F(UpdateSelection, LeavesOutOtherHardware) {
    EXPECT_EQ(offered(release("1.1", element("hardwareRequirements", "arm64"))), "");
    EXPECT_EQ(offered(release("1.1", element("hardwareRequirements", "arm64,x86_64"))), "1.1");
    rules.system.architecture = "aarch64";
    EXPECT_EQ(offered(release("1.1", element("hardwareRequirements", "arm64"))), "1.1");
}

TEST_F(UpdateSelection, LeavesOutChannelsThatWereNotChosen) {
    const std::string items = release("1.2", element("channel", "beta")) + release("1.1");
    EXPECT_EQ(offered(items), "1.1");
    rules.channels = {"nightly"};
    EXPECT_EQ(offered(items), "1.1");
    rules.channels = {"nightly", "beta"};
    EXPECT_EQ(offered(items), "1.2");
    EXPECT_EQ(offered(release("1.1")), "1.1") << "the default channel always counts";
}

TEST_F(UpdateSelection, SystemVersionsMatterOnlyToItemsForThisSystem) {
    EXPECT_EQ(offered(release("1.1", element("minimumSystemVersion", "10.13"))), "1.1");
    EXPECT_EQ(offered(forSystem("1.1", "linux", element("minimumSystemVersion", "2.36"))), "1.1");
    EXPECT_EQ(offered(forSystem("1.1", "linux", element("minimumSystemVersion", "2.37"))), "");
    EXPECT_EQ(offered(forSystem("1.1", "linux", element("maximumSystemVersion", "2.35"))), "");
    EXPECT_EQ(offered(forSystem("1.1", "linux", element("maximumSystemVersion", "2.36"))), "1.1");
    rules.system.version = "";
    EXPECT_EQ(offered(forSystem("1.1", "linux", element("minimumSystemVersion", "99"))), "1.1");
}

TEST_F(UpdateSelection, SaysWhatThisSystemCannotRunOnlyIfThereIsNothingElse) {
    const std::string unsupported =
        forSystem("1.2", "linux", element("minimumSystemVersion", "2.37"));
    EXPECT_EQ(select(unsupported).unsupported->version, "1.2");
    const Selection both = select(unsupported + release("1.1"));
    EXPECT_EQ(both.update->item.version, "1.1");
    EXPECT_FALSE(both.unsupported);
    EXPECT_FALSE(
        select(forSystem("0.9", "linux", element("minimumSystemVersion", "9"))).unsupported)
        << "an old version is no news";
}

TEST_F(UpdateSelection, PrefersWhatIsNoMajorUpgrade) {
    const std::string major = release("2.0", element("minimumAutoupdateVersion", "2.0"));
    EXPECT_EQ(offered(major + release("1.1")), "1.1");
    EXPECT_FALSE(select(major + release("1.1")).update->major);
    EXPECT_EQ(offered(major), "2.0");
    EXPECT_TRUE(select(major).update->major);
    rules.installedVersion = "2.0b1";
    EXPECT_TRUE(select(major).update->major);
    rules.installedVersion = "1.9";
    EXPECT_FALSE(select(release("2.0", element("minimumAutoupdateVersion", "1.9"))).update->major);
}

TEST_F(UpdateSelection, LeavesOutWhatThisVersionCannotTake) {
    EXPECT_EQ(offered(release("1.2", element("minimumUpdateVersion", "1.1")) + release("1.1")),
              "1.1");
    EXPECT_EQ(offered(release("1.2", element("minimumUpdateVersion", "1.0"))), "1.2");
}

TEST_F(UpdateSelection, SkippedVersionIsNotOfferedUnasked) {
    rules.state.skippedVersion = "1.1";
    EXPECT_EQ(offered(release("1.1")), "");
    EXPECT_EQ(offered(release("1.0.5")), "") << "older ones are skipped along with it";
    EXPECT_EQ(offered(release("1.1") + release("1.2")), "1.2");
    rules.kind = CheckKind::userInitiated;
    EXPECT_EQ(offered(release("1.1")), "1.1");
}

TEST_F(UpdateSelection, SkippedMajorUpgradeHidesItsWholeSeriesAndNothingElse) {
    const auto major = [](std::string_view version, std::string_view more = "") {
        return release(version, element("minimumAutoupdateVersion", "2.0") + std::string(more));
    };
    skip(*select(major("2.0")).update, rules.state);
    EXPECT_EQ(offered(major("2.0")), "");
    EXPECT_EQ(offered(major("2.1")), "");
    EXPECT_EQ(offered(release("1.1")), "1.1");
    EXPECT_EQ(offered(release("3.0", element("minimumAutoupdateVersion", "3.0"))), "3.0");
    EXPECT_EQ(offered(major("2.5", element("ignoreSkippedUpgradesBelowVersion", "2.5"))), "2.5");
    EXPECT_EQ(offered(major("2.5", element("ignoreSkippedUpgradesBelowVersion", "2.0"))), "");
    rules.kind = CheckKind::userInitiated;
    EXPECT_EQ(offered(major("2.0")), "2.0");
}

TEST_F(UpdateSelection, ForgottenSkipIsOfferedAgain) {
    const auto update = *select(release("1.1")).update;
    skip(update, rules.state);
    EXPECT_EQ(offered(release("1.1")), "");
    forgetSkip(update, rules.state);
    EXPECT_EQ(offered(release("1.1")), "1.1");
}

TEST_F(UpdateSelection, ReleaseReachesOneGroupAfterTheOther) {
    const std::string item = release("1.1", "<pubDate>Wed, 18 Nov 2026 00:00:00 +0000</pubDate>" +
                                                element("phasedRolloutInterval", "86400"));
    // Three days after the release.
    for (std::uint32_t number = 0; number < 14; ++number) {
        rules.state.rolloutNumber = number;
        EXPECT_EQ(offered(item), number % 7 <= 3 ? "1.1" : "") << number;
    }
    rules.state.rolloutNumber = 6;
    rules.now += std::chrono::hours(72);
    EXPECT_EQ(offered(item), "1.1");
}

TEST_F(UpdateSelection, NobodyWaitsWhoAsksOrIsInDanger) {
    const std::string published = "<pubDate>Sat, 21 Nov 2026 00:00:00 +0000</pubDate>";
    const std::string phased = element("phasedRolloutInterval", "86400");
    rules.state.rolloutNumber = 6;
    EXPECT_EQ(offered(release("1.1", published + phased)), "");
    EXPECT_EQ(offered(release("1.1", phased)), "1.1") << "without a date nobody can wait";
    EXPECT_EQ(offered(release("1.1", published + phased + "<sparkle:criticalUpdate/>")), "1.1");
    EXPECT_EQ(offered(release("1.1", published + phased +
                                         "<sparkle:criticalUpdate sparkle:version=\"0.5\"/>")),
              "");
    rules.kind = CheckKind::userInitiated;
    EXPECT_EQ(offered(release("1.1", published + phased)), "1.1");
}

TEST_F(UpdateSelection, CriticalIsForAllOrForThoseBelow) {
    EXPECT_FALSE(select(release("1.1")).update->critical);
    EXPECT_TRUE(select(release("1.1", "<sparkle:criticalUpdate/>")).update->critical);
    const std::string below = "<sparkle:criticalUpdate sparkle:version=\"1.0\"/>";
    EXPECT_FALSE(select(release("1.1", below)).update->critical);
    rules.installedVersion = "0.9";
    EXPECT_TRUE(select(release("1.1", below)).update->critical);
}

TEST_F(UpdateSelection, InformationalIsForAllOrForThoseNamed) {
    EXPECT_FALSE(select(release("1.1")).update->informational);
    EXPECT_TRUE(select(release("1.1", element("informationalUpdate", ""))).update->informational);
    const auto informational = [this](std::string_view inside) {
        return select(release("1.1", element("informationalUpdate", inside))).update->informational;
    };
    EXPECT_TRUE(informational(element("version", "0.5") + element("version", "1.0.0")));
    EXPECT_FALSE(informational(element("version", "0.5")));
    EXPECT_TRUE(informational(element("belowVersion", "1.0.1")));
    EXPECT_FALSE(informational(element("belowVersion", "1.0")));
    EXPECT_TRUE(select("<item><sparkle:version>1.1</sparkle:version>"
                       "<link>https://example.com/</link></item>")
                    .update->informational)
        << "there is nothing to install";
}

} // namespace kelo::test
