#include "base/async/Cancellation.h"
#include "fakes/authenticator/ScopedAuthenticator.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kelo {

using namespace authenticator;

namespace {

using Resumption = std::optional<CheckedContinuation<int>>;

struct SetWhenDropped {
    explicit SetWhenDropped(bool& flag) : flag(flag) {}
    SetWhenDropped(const SetWhenDropped&) = delete;
    SetWhenDropped& operator=(const SetWhenDropped&) = delete;
    ~SetWhenDropped() { flag = true; }
    bool& flag;
};

Task<int> waitFor(Resumption& resumption, bool& dropped) {
    const SetWhenDropped guard(dropped);
    co_return co_await withCheckedContinuation<int>(
        [&](CheckedContinuation<int> continuation) { resumption = continuation; });
}

Task<int> failAtOnce() {
    throw Failure(FailureKind::storage, "No.");
    co_return 0;
}

class CancellationTest : public testing::Test {
protected:
    fakes::ScopedAuthenticator scope;
    Cancellation cancellation;
    Resumption resumption;
    bool dropped = false;
};

} // namespace

TEST_F(CancellationTest, AnUncancelledTaskGivesItsResult) {
    const auto ended = scope.run(untilCancelled(cancellation, waitFor(resumption, dropped)));
    resumption->resume(7);
    scope.loop.runUntilIdle();
    EXPECT_EQ(ended->value, std::optional(7));
    cancellation.cancel();
    scope.loop.runUntilIdle();
}

TEST_F(CancellationTest, ACancelledTaskIsDroppedInALaterTurn) {
    const auto ended = scope.run(untilCancelled(cancellation, waitFor(resumption, dropped)));
    cancellation.cancel();
    EXPECT_FALSE(dropped);
    scope.loop.runUntilIdle();
    EXPECT_TRUE(dropped);
    ASSERT_TRUE(ended->value);
    EXPECT_EQ(*ended->value, std::nullopt);
    resumption->resume(7);
    scope.loop.runUntilIdle();
}

TEST_F(CancellationTest, WhenBothComeInOneTurnTheFirstCounts) {
    const auto ended = scope.run(untilCancelled(cancellation, waitFor(resumption, dropped)));
    cancellation.cancel();
    resumption->resume(7);
    scope.loop.runUntilIdle();
    EXPECT_EQ(*ended->value, std::nullopt);
}

TEST_F(CancellationTest, AnEarlierCancellationStartsNothing) {
    cancellation.cancel();
    const auto ended = scope.run(untilCancelled(cancellation, waitFor(resumption, dropped)));
    EXPECT_EQ(*ended->value, std::nullopt);
    EXPECT_FALSE(resumption);
}

TEST_F(CancellationTest, AFailurePassesThrough) {
    const auto ended = scope.run(untilCancelled(cancellation, failAtOnce()));
    ASSERT_TRUE(ended->error);
    EXPECT_EQ(ended->error->localizedDescription(), "No.");
}

TEST_F(CancellationTest, DroppingTheWaitingFlowDropsTheTask) {
    scope.run(untilCancelled(cancellation, waitFor(resumption, dropped)));
    dropSpawnedTasks();
    EXPECT_TRUE(dropped);
    cancellation.cancel();
    scope.loop.runUntilIdle();
}

} // namespace kelo
