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

// The two builds take long, and somebody may work on meanwhile. Others stand in for what builds.
TEST(PackageScript, ComparesBuildsOfOneCommit) {
    if (runCommand("command -v git").status != 0)
        GTEST_SKIP() << "there is no git";
    const TreeFolder folder;
    const auto outcome = runCommand("cd '" + folder.path().string() + R"sh(' &&
        export FOLDER="$PWD" PATH="$PWD/tools:$PATH" GIT_CONFIG_GLOBAL="$PWD/settings" &&
        git config --global user.name Ada && git config --global user.email ada@example.org &&
        mkdir -p repository/scripts tools && cd repository && git init -q &&
        cp ')sh" KELO_SOURCE_FOLDER R"sh(/scripts/package' scripts/ &&
        echo '#!/bin/sh' | tee scripts/setup >scripts/sbom &&
        printf '#!/bin/sh\nmkdir -p build/package\ngit -C "$FOLDER/repository" commit -q --allow-empty -m more\n' >scripts/build &&
        printf '#!/bin/sh\nmkdir -p "$4" && git rev-parse HEAD >"$4/kelo-1.deb"\n' >../tools/cpack &&
        chmod +x scripts/* ../tools/* && git add . && git commit -q -m first &&
        TMPDIR="$FOLDER" scripts/package --check && git rev-list --count HEAD)sh");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("every file came out the same.\n3\n"));
}

TEST(PackageScript, TakesSettingsOnly) {
    const auto outcome = inSource("scripts/package debug");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output, HasSubstr("\"debug\" is no setting"));
}

} // namespace kelo::tests
