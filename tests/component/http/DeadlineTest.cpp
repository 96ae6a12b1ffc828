#include "linux/http/Deadline.h"
#include "fakes/FakeMainLoop.h"

#include <gtest/gtest.h>

namespace kelo::test {

using http::Deadline;

class DeadlineTest : public testing::Test {
protected:
    static bool cancelled(const Deadline& deadline) {
        return g_cancellable_is_cancelled(deadline.cancellable()) != FALSE;
    }

    fakes::FakeMainLoop loop;
    MainLoop::Installation installation{loop};
};

TEST_F(DeadlineTest, CancelsWhenItsTimeIsOver) {
    const Deadline deadline(std::chrono::seconds(60));
    loop.advance(std::chrono::milliseconds(59'999));
    EXPECT_FALSE(deadline.passed());
    EXPECT_FALSE(cancelled(deadline));
    loop.advance(std::chrono::milliseconds(1));
    EXPECT_TRUE(deadline.passed());
    EXPECT_TRUE(cancelled(deadline));
}

TEST_F(DeadlineTest, RestartedItBeginsAnew) {
    Deadline deadline(std::chrono::seconds(60));
    loop.advance(std::chrono::seconds(59));
    deadline.restart();
    EXPECT_EQ(loop.pendingTimers(), 1u);
    loop.advance(std::chrono::seconds(59));
    EXPECT_FALSE(deadline.passed());
    loop.advance(std::chrono::seconds(1));
    EXPECT_TRUE(deadline.passed());
}

TEST_F(DeadlineTest, ThatGoesCancelsWithoutHavingPassedAndLeavesNoTimer) {
    std::optional<Deadline> deadline(std::in_place, std::chrono::seconds(60));
    const auto cancellable = gobject::GObjectPointer<GCancellable>::share(deadline->cancellable());
    EXPECT_FALSE(deadline->passed());
    deadline.reset();
    EXPECT_TRUE(g_cancellable_is_cancelled(cancellable.get()));
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

} // namespace kelo::test
