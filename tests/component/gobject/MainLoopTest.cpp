#include "component/LogReader.h"
#include "component/gobject/LoopClock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kelo::test {

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

class MainLoopTest : public testing::Test {
protected:
    static std::shared_ptr<Timer> schedule(std::chrono::duration<double> delay,
                                           std::function<void()> action) {
        return MainLoop::main().scheduleTimer(delay, std::move(action));
    }
    std::function<void()> notes(const std::string& name) {
        return [this, name] { happened.push_back(name); };
    }
    /// Lets so much time pass on the loop. What was scheduled before, and is due by then, has
    /// fired.
    void pass(std::chrono::milliseconds span) { ASSERT_TRUE(passOn(loop, span)); }

    TestMainLoop loop;
    Names happened;
};

TEST_F(MainLoopTest, TimerFiresAfterItsDelayAndNoEarlier) {
    for (const auto delay : {300us, 500us, 1500us, 20400us, 250000us}) {
        const auto begin = loopTime();
        std::chrono::microseconds fired{};
        const auto timer = schedule(delay, [&] { fired = loopTime(); });
        EXPECT_EQ(fired, 0us) << "not within the call";
        ASSERT_TRUE(loop.runUntil([&] { return fired > 0us; }));
        EXPECT_GE((fired - begin).count(), delay.count());
    }
}

// What the loop plans does not depend on how busy the machine is.
TEST_F(MainLoopTest, LoopSleepsNoLongerThanTheDelay) {
    ASSERT_EQ(plannedSleep(), -1ms) << "nothing else is under way";
    const auto timer = schedule(3600s, [] {});
    const auto planned = plannedSleep();
    EXPECT_LE(planned, 3600s);
    EXPECT_GT(planned, 3000s);
    timer->invalidate();
    EXPECT_EQ(plannedSleep(), -1ms);
}

TEST_F(MainLoopTest, TimerFiresOnce) {
    schedule(1ms, notes("timer"));
    pass(20ms);
    pass(20ms);
    EXPECT_EQ(happened, Names{"timer"});
}

TEST_F(MainLoopTest, TimersFireInTheOrderOfTheirDeadlines) {
    // However busy the machine is, the first is not due when the second fires.
    const auto late = schedule(3600s, notes("late"));
    schedule(1ms, notes("early"));
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
    EXPECT_EQ(happened, Names{"early"});
    late->invalidate();
    happened.clear();
    schedule(1ms, notes("early"));
    schedule(30ms, notes("late"));
    ASSERT_TRUE(loop.runUntil([this] { return happened.size() == 2; }));
    EXPECT_EQ(happened, (Names{"early", "late"}));
}

TEST_F(MainLoopTest, TimerWithoutDelayFiresInALaterTurn) {
    schedule(0s, notes("timer"));
    EXPECT_EQ(happened, Names{});
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
}

TEST_F(MainLoopTest, InvalidatedTimerNeverFires) {
    const auto timer = schedule(1ms, notes("timer"));
    timer->invalidate();
    pass(20ms);
    EXPECT_EQ(happened, Names{});
}

TEST_F(MainLoopTest, InvalidatedTimerThatIsDueDoesNotFire) {
    const auto second = std::make_shared<std::shared_ptr<Timer>>();
    const auto first = schedule(1ms, [this, second] {
        happened.emplace_back("first");
        (*second)->invalidate();
    });
    *second = schedule(1ms, notes("second"));
    // Both come due before the loop turns again.
    const auto begin = loopTime();
    while (loopTime() - begin < 5ms)
        std::this_thread::yield();
    pass(20ms);
    EXPECT_EQ(happened, Names{"first"});
}

TEST_F(MainLoopTest, InvalidateIsHarmlessAfterwards) {
    const LogReader log;
    const auto fired = schedule(1ms, notes("fired"));
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
    fired->invalidate();
    const auto cancelled = schedule(1ms, notes("cancelled"));
    cancelled->invalidate();
    cancelled->invalidate();
    pass(20ms);
    EXPECT_EQ(happened, Names{"fired"});
    EXPECT_EQ(log.complaints(), Names{});
}

TEST_F(MainLoopTest, InvalidateOfOneTimerLeavesTheOthersAlone) {
    const auto one = schedule(1ms, notes("one"));
    const auto other = schedule(1ms, notes("other"));
    one->invalidate();
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
    EXPECT_EQ(happened, Names{"other"});
}

TEST_F(MainLoopTest, TimerMayInvalidateItselfWhileItFires) {
    const LogReader log;
    const auto own = std::make_shared<std::shared_ptr<Timer>>();
    *own = schedule(1ms, [this, own, held = std::make_shared<int>(7)] {
        (*own)->invalidate();
        happened.push_back(std::to_string(*held));
    });
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
    own->reset();
    EXPECT_EQ(happened, Names{"7"});
    EXPECT_EQ(log.complaints(), Names{});
}

TEST_F(MainLoopTest, TimerMaySetAnotherWhileItFires) {
    schedule(1ms, [this] {
        happened.emplace_back("first");
        schedule(1ms, notes("second"));
    });
    ASSERT_TRUE(loop.runUntil([this] { return happened.size() == 2; }));
    EXPECT_EQ(happened, (Names{"first", "second"}));
}

TEST_F(MainLoopTest, DroppedTimerFiresAllTheSame) {
    schedule(1ms, notes("dropped")).reset();
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
}

TEST_F(MainLoopTest, TimerLetsGoOfItsActionWhenItFiredOrWasInvalidated) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> watched = held;
    const auto fired = schedule(1ms, [this, held] { happened.emplace_back("fired"); });
    held.reset();
    ASSERT_TRUE(loop.runUntil([this] { return !happened.empty(); }));
    EXPECT_TRUE(watched.expired());

    held = std::make_shared<int>();
    const std::weak_ptr<int> watchedToo = held;
    const auto invalidated = schedule(3600s, [held] {});
    held.reset();
    EXPECT_FALSE(watchedToo.expired());
    invalidated->invalidate();
    EXPECT_TRUE(watchedToo.expired());
}

TEST_F(MainLoopTest, PostedJobsRunLaterInTheirOrder) {
    for (const char* const name : {"one", "two", "three"})
        MainLoop::main().post(notes(name));
    EXPECT_EQ(happened, Names{});
    ASSERT_TRUE(loop.runUntil([this] { return happened.size() == 3; }));
    EXPECT_EQ(happened, (Names{"one", "two", "three"}));
    pass(20ms);
    EXPECT_EQ(happened.size(), 3u) << "each runs once";
}

TEST_F(MainLoopTest, JobPostedByAJobRunsInALaterTurn) {
    MainLoop::main().post([this] {
        MainLoop::main().post(notes("inner"));
        happened.emplace_back("outer");
    });
    ASSERT_TRUE(loop.runUntil([this] { return happened.size() == 2; }));
    EXPECT_EQ(happened, (Names{"outer", "inner"}));
}

TEST_F(MainLoopTest, PostedJobsRunBeforeDrawingAndIdleWork) {
    const GSourceFunc note = [](gpointer names) -> gboolean {
        static_cast<Names*>(names)->emplace_back("idle");
        return G_SOURCE_REMOVE;
    };
    g_idle_add_full(G_PRIORITY_HIGH_IDLE, note, &happened, nullptr);
    MainLoop::main().post(notes("job"));
    ASSERT_TRUE(loop.runUntil([this] { return happened.size() == 2; }));
    EXPECT_EQ(happened, (Names{"job", "idle"}));
}

TEST_F(MainLoopTest, JobsOfAnotherThreadRunOnTheMainThread) {
    std::thread::id where;
    std::thread other([&] {
        MainLoop::main().post([&, poster = std::this_thread::get_id()] {
            EXPECT_NE(poster, std::this_thread::get_id());
            where = std::this_thread::get_id();
        });
    });
    const bool ran = loop.runUntil([&] { return where != std::thread::id(); });
    other.join();
    ASSERT_TRUE(ran);
    EXPECT_EQ(where, std::this_thread::get_id());
}

} // namespace

} // namespace kelo::test
