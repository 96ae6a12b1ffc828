#include "common/MomentFile.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace kelo::bench {
namespace {

using Time = std::chrono::steady_clock::time_point;
using std::chrono::nanoseconds;

TEST(MomentFile, ALineIsANameAndATime) {
    const auto lines = readMoments("mainEntered 12\nasked GET /login 34\n");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].name, "mainEntered");
    EXPECT_EQ(lines[0].time, Time(nanoseconds(12)));
    EXPECT_EQ(lines[1].name, "asked GET /login");
    EXPECT_EQ(lines[1].time, Time(nanoseconds(34)));
}

TEST(MomentFile, WhatIsNoMomentIsLeftOut) {
    const auto lines = readMoments("noTime\n 5\nwords here\ngood 7\nx 8y\n\nhalf 9");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].name, "good");
}

TEST(MomentFile, TheFirstOfANameFromATimeOnIsFound) {
    const auto lines = readMoments("a 1\nb 2\na 3\na 4\n");
    EXPECT_EQ(firstMoment(lines, "a"), Time(nanoseconds(1)));
    EXPECT_EQ(firstMoment(lines, "a", Time(nanoseconds(2))), Time(nanoseconds(3)));
    EXPECT_EQ(firstMoment(lines, "a", Time(nanoseconds(3))), Time(nanoseconds(3)));
    EXPECT_EQ(firstMoment(lines, "c"), std::nullopt);
}

TEST(MomentFile, AProgramThatInheritsTheFileWritesIntoIt) {
    const test::TemporaryFolder folder;
    const MomentFile file(folder.path() / "moments");
    const std::string descriptor = file.variables().at("KELO_MOMENTS");
    const std::string command = "echo 'told 42' >&" + descriptor;
    ASSERT_EQ(std::system(command.c_str()), 0);
    ASSERT_EQ(file.read().size(), 1U);
    EXPECT_EQ(file.read()[0].name, "told");
}

} // namespace
} // namespace kelo::bench
