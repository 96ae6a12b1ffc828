#include "component/packaging/Packages.h"

#include <gmock/gmock.h>

namespace kelo::tests {

namespace {

using testing::HasSubstr;

Outcome inSource(const std::string& command) {
    return runCommand("cd '" KELO_SOURCE_FOLDER "' && " + command);
}

} // namespace

// Where scripts/setup has installed what a build needs, there is no library for tests; and a newer
// compiler, which warns of more, must not keep anybody from building.
TEST(PackageScript, AsksForNoTestsAndForgivesWarnings) {
    const auto preset = inSource("'" KELO_CMAKE "' --preset package -N");
    ASSERT_EQ(preset.status, 0) << preset.output;
    for (const auto* setting : {"KELO_BUILD_TESTS=\"OFF\"", "KELO_BUILD_BENCHMARKS=\"OFF\"",
                                "KELO_WARNINGS_AS_ERRORS=\"OFF\"", "CMAKE_BUILD_TYPE=\"Release\"",
                                "KELO_HIDE_PATHS=\"ON\""})
        EXPECT_THAT(preset.output, HasSubstr(setting));
}

TEST(PackageScript, TakesSettingsOnly) {
    const auto outcome = inSource("scripts/package debug");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output, HasSubstr("\"debug\" is no setting"));
}

} // namespace kelo::tests
