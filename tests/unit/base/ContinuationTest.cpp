#include "base/async/Continuation.h"
#include "base/async/Spawn.h"
#include "base/async/Task.h"
#include "fakes/FakeMainLoop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace kelo::platform {
namespace {

struct ContinuationTest : testing::Test {
    fakes::FakeMainLoop loop;
    MainLoop::Installation installation{loop};
    std::optional<CheckedContinuation<int>> pending;
    std::string outcome;

    ~ContinuationTest() override { dropSpawnedTasks(); }
};

Task<void> waitFor(std::optional<CheckedContinuation<int>>& pending, std::string& outcome) {
    try {
        const int value = co_await withCheckedContinuation<int>(
            [&](CheckedContinuation<int> continuation) { pending = continuation; });
        outcome = std::to_string(value);
    } catch (const std::runtime_error& error) {
        outcome = error.what();
    }
}

TEST_F(ContinuationTest, FlowGoesOnInALaterTurnThanTheResumption) {
    spawn(waitFor(pending, outcome));
    loop.runUntilIdle();
    pending->resume(7);
    EXPECT_EQ(outcome, "");
    loop.runUntilIdle();
    EXPECT_EQ(outcome, "7");
}

TEST_F(ContinuationTest, FailureIsThrownInTheFlow) {
    spawn(waitFor(pending, outcome));
    loop.runUntilIdle();
    pending->fail(std::make_exception_ptr(std::runtime_error("gone")));
    loop.runUntilIdle();
    EXPECT_EQ(outcome, "gone");
}

TEST_F(ContinuationTest, SecondResumptionStopsTheProcess) {
    spawn(waitFor(pending, outcome));
    loop.runUntilIdle();
    pending->resume(1);
    EXPECT_DEATH(pending->resume(2), "a continuation is resumed once");
    loop.runUntilIdle();
}

TEST_F(ContinuationTest, ResumingADroppedFlowDoesNothing) {
    spawn(waitFor(pending, outcome));
    loop.runUntilIdle();
    dropSpawnedTasks();
    pending->resume(7);
    loop.runUntilIdle();
    EXPECT_EQ(outcome, "");
}

} // namespace
} // namespace kelo::platform
