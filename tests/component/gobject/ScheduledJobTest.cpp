#include "component/gobject/LoopClock.h"
#include "linux/gobject/MainLoopSource.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::test {

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

class ScheduledJobTest : public testing::Test {
protected:
    std::function<void()> notes(const std::string& name) {
        return [this, name] { happened.push_back(name); };
    }

    TestMainLoop loop;
    Names happened;
};

TEST_F(ScheduledJobTest, RunsOnceAndNoLongerWaitsThen) {
    gobject::ScheduledJob job;
    job.whenIdle([&] { happened.emplace_back(job.isWaiting() ? "waits" : "runs"); });
    EXPECT_TRUE(job.isWaiting());
    EXPECT_EQ(happened, Names{}) << "not within the call";
    ASSERT_TRUE(passOn(loop, 20ms));
    EXPECT_EQ(happened, Names{"runs"});
    EXPECT_EQ(plannedSleep(), -1ms);
}

TEST_F(ScheduledJobTest, RunsAfterTheDelayAndNoEarlier) {
    gobject::ScheduledJob job;
    const auto begin = loopTime();
    job.after(20ms, [&] { EXPECT_GE((loopTime() - begin).count(), 20000); });
    ASSERT_TRUE(loop.runUntil([&] { return !job.isWaiting(); }));
    job.after(3600s, notes("late"));
    EXPECT_GT(plannedSleep(), 3000s);
}

TEST_F(ScheduledJobTest, WhatIsScheduledLaterReplacesWhatWaits) {
    gobject::ScheduledJob job;
    job.whenIdle(notes("first"));
    job.after(1ms, notes("second"));
    ASSERT_TRUE(passOn(loop, 20ms));
    EXPECT_EQ(happened, Names{"second"});
}

TEST_F(ScheduledJobTest, CancelledOrDestroyedNeverRunsAndLeavesNothingInTheLoop) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> watched = held;
    std::optional<gobject::ScheduledJob> job(std::in_place);
    job->whenIdle([this, held] { happened.emplace_back("cancelled"); });
    held.reset();
    job->cancel();
    EXPECT_TRUE(watched.expired()) << "the job is dropped at once";
    EXPECT_FALSE(job->isWaiting());
    job->after(1ms, notes("destroyed"));
    job.reset();
    EXPECT_EQ(plannedSleep(), -1ms);
    ASSERT_TRUE(passOn(loop, 20ms));
    EXPECT_EQ(happened, Names{});
}

TEST_F(ScheduledJobTest, TheJobMayScheduleTheNextOne) {
    gobject::ScheduledJob job;
    job.whenIdle([&] {
        job.whenIdle(notes("next"));
        happened.emplace_back("first");
    });
    ASSERT_TRUE(loop.runUntil([this] { return happened.size() == 2; }));
    EXPECT_EQ(happened, (Names{"first", "next"}));
}

TEST_F(ScheduledJobTest, TheJobMayDestroyItsOwner) {
    auto job = std::make_unique<gobject::ScheduledJob>();
    const auto kept = std::make_shared<std::string>("alive");
    job->whenIdle([&, kept] {
        job.reset();
        happened.push_back(*kept);
    });
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
    EXPECT_EQ(happened, Names{"alive"});
}

} // namespace

} // namespace kelo::test
