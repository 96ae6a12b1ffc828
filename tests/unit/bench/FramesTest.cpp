#include "common/Frames.h"

#include <gtest/gtest.h>

namespace kelo::bench {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using Time = std::chrono::steady_clock::time_point;

constexpr const char* fourFrames = "frameBegan 1000000\nframeEnded 3000000\n"
                                   "frameBegan 20000000\nloadStarted 21000000\n"
                                   "frameEnded 36000000\n"
                                   "frameBegan 40000000\nframeEnded 56000001\n"
                                   "frameBegan 60000000\nframeEnded 61000000\n";

TEST(Frames, TheLongestIsFoundAndThoseThatMissTheNextAreCounted) {
    const auto frames = framesSince(readMoments(fourFrames), Time{});
    EXPECT_EQ(frames.count, 4U);
    EXPECT_EQ(frames.longest, nanoseconds(16'000'001));
    EXPECT_EQ(frames.janky, 1U);
}

TEST(Frames, WhatBeganBeforeDoesNotCount) {
    const auto frames = framesSince(readMoments(fourFrames), Time(milliseconds(61)));
    EXPECT_EQ(frames.count, 0U);
    EXPECT_EQ(framesSince(readMoments(fourFrames), Time(milliseconds(40))).count, 2U);
}

TEST(Frames, AFrameNeedsBothEnds) {
    const auto lines = readMoments("frameEnded 5\nframeBegan 10\nframeBegan 20\nframeEnded 25\n"
                                   "frameEnded 900\nframeBegan 1000\n");
    const auto frames = framesSince(lines, Time{});
    EXPECT_EQ(frames.count, 1U);
    EXPECT_EQ(frames.longest, nanoseconds(5));
}

} // namespace
} // namespace kelo::bench
