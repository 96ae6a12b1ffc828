// A package manager must take for newer what Kelo takes for newer.
#include "component/packaging/Packages.h"

#include "updater/appcast/Version.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::tests {

namespace {

constexpr std::array versions{"0.9",   "1a1",    "1.0a2",  "1.0a10", "1.0b",    "1.0b1",  "1.0b1.1",
                              "1.0b2", "1.0bc1", "1.0rc1", "1",      "1.0",     "1.0.0",  "1.0.1a1",
                              "1.0.1", "1.1b1",  "1.1",    "1.1.0",  "1.1.0.1", "1.2",    "1.10rc1",
                              "1.10",  "2.0B1",  "2.0b1",  "2",      "10",      "2026.11"};

std::string nameFor(const std::string& version, const std::string& build) {
    const auto outcome =
        runCommand("'" KELO_CMAKE "' -DKELO_VERSION=" + version + " -DKELO_BUILD_NUMBER=" + build +
                   " -P '" KELO_SOURCE_FOLDER "/cmake/DebianVersion.cmake' | sed 's/^-- //'");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return outcome.output.substr(0, outcome.output.find('\n'));
}

/// Asks Debian's own tool about many pairs at once: a line for each that is not so.
std::string wrongAmong(const std::string& comparisons) {
    return runCommand(
               "while read -r one order other; do dpkg --compare-versions $one $order $other "
               "|| echo \"$one is not $order $other\"; done <<'END'\n" +
               comparisons + "END\n")
        .output;
}

} // namespace

TEST(PackageVersion, IsInTheOrderOfKelosOwnVersions) {
    std::vector<std::string> names;
    for (const auto* version : versions)
        names.push_back(nameFor(version, "7"));
    std::ostringstream comparisons;
    int unequal = 0;
    for (std::size_t one = 0; one < versions.size(); ++one)
        for (std::size_t other = 0; other < versions.size(); ++other) {
            const auto order = updater::compareVersions(versions[one], versions[other]);
            comparisons << names[one]
                        << (order < 0   ? " lt "
                            : order > 0 ? " gt "
                                        : " eq ")
                        << names[other] << "\n";
            unequal += order != 0 ? 1 : 0;
        }
    EXPECT_GT(unequal, 600);
    EXPECT_EQ(wrongAmong(comparisons.str()), "");
}

TEST(PackageVersion, OfOneReleaseGrowsWithTheBuild) {
    EXPECT_EQ(wrongAmong(nameFor("1.1", "9") + "~deb12 lt " + nameFor("1.1.0", "10") + "~deb12\n" +
                         nameFor("1.1b2", "10") + "~deb12 lt " + nameFor("1.1", "9") + "~deb12\n" +
                         nameFor("1.1", "9.2") + " gt " + nameFor("1.1", "9.1.5") + "\n"),
              "");
}

// Whoever moves to a newer release of the system gets the package that is built for it.
TEST(PackageVersion, GrowsWithTheSystemAndIsLessThanWithoutOne) {
    const auto plain = nameFor("1.1", "9");
    EXPECT_EQ(
        wrongAmong(plain + "~deb12 lt " + plain + "~deb13\n" + plain + "~deb13 lt " + plain + "\n"),
        "");
}

} // namespace kelo::tests
