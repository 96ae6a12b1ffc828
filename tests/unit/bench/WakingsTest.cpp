#include "common/Wakings.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kelo::bench {
namespace {

TEST(Wakings, OnlyWhatCameBetweenTheTwoLooksCounts) {
    const Wakings before{{1, {"kelo", {{1, {"kelo", 10, 5, 100}}, {2, {"pool", 7, 7, 7}}}}}};
    const Wakings after{{1, {"kelo", {{1, {"kelo", 14, 6, 130}}, {3, {"new", 2, 1, 9}}}}},
                        {9, {"child", {{9, {"child", 3, 0, 4}}}}}};
    const auto between = wakingsBetween(before, after);
    EXPECT_EQ(between.at(1).threads.at(1).voluntary, 4U);
    EXPECT_EQ(between.at(1).threads.at(1).involuntary, 1U);
    EXPECT_EQ(between.at(1).threads.at(1).nanoseconds, 30U);
    EXPECT_EQ(between.at(1).sum().voluntary, 6U);
    EXPECT_EQ(between.at(1).sum().involuntary, 2U);
    EXPECT_EQ(between.at(1).sum().nanoseconds, 39U);
    EXPECT_EQ(between.at(9).sum().voluntary, 3U);
    EXPECT_FALSE(between.at(1).threads.contains(2));
}

TEST(Wakings, TheCountsAreThoseThatTheKernelKeeps) {
    rusage before{};
    ::getrusage(RUSAGE_SELF, &before);
    const auto counts = wakingsOf({::getpid()}).at(::getpid());
    rusage after{};
    ::getrusage(RUSAGE_SELF, &after);
    const auto within = [](std::uint64_t value, long least, long most) {
        return value >= static_cast<std::uint64_t>(least) &&
               value <= static_cast<std::uint64_t>(most);
    };
    EXPECT_TRUE(within(counts.sum().voluntary, before.ru_nvcsw, after.ru_nvcsw));
    EXPECT_TRUE(within(counts.sum().involuntary, before.ru_nivcsw, after.ru_nivcsw));
    EXPECT_GT(counts.sum().nanoseconds, 0U);
    EXPECT_EQ(counts.program, "unit_bench");
}

TEST(Wakings, WhatHasEndedIsLeftOut) {
    EXPECT_TRUE(wakingsOf({2'000'000'000}).empty());
}

} // namespace
} // namespace kelo::bench
