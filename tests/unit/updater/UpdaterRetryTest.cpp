#include "unit/updater/UpdaterFixture.h"

namespace kelo::test {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

/// The check that follows on one that failed.
using UpdaterRetry = UpdaterFixture;

TEST_F(UpdaterRetry, OfAFailedCheckThatIsNotedAsNoneComesAfterAnHour) {
    transport.replies.erase(feedAddress);
    const auto before = clock.time - hours(30);
    store->state.lastCheck = before;
    startAutomatic();
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_EQ(store->state.lastCheck, before);
    EXPECT_EQ(store->state.checkCount, 0u);
    pass(minutes(58));
    EXPECT_EQ(feedRequests(), 1u) << "it is not tried again and again";
    pass(minutes(3));
    EXPECT_EQ(feedRequests(), 2u);
    publish(release("1.0"));
    pass(hours(1));
    EXPECT_EQ(feedRequests(), 3u);
    EXPECT_GT(store->state.lastCheck, before);
    EXPECT_EQ(store->state.checkCount, 1u);
    pass(hours(23));
    EXPECT_EQ(feedRequests(), 3u);
}

TEST_F(UpdaterRetry, ComesEarlierWhenTheNetworkComes) {
    transport.replies.erase(feedAddress);
    startAutomatic();
    publish(release("1.0"));
    network.come();
    network.come();
    pass(minutes(1));
    EXPECT_EQ(feedRequests(), 2u);
    network.come();
    pass(hours(2));
    EXPECT_EQ(feedRequests(), 2u) << "the last one did not fail";
}

TEST_F(UpdaterRetry, GivesTheNetworkAMomentFirst) {
    transport.replies.erase(feedAddress);
    startAutomatic();
    network.come();
    pass(seconds(9));
    EXPECT_EQ(feedRequests(), 1u) << "names may not be looked up yet";
    pass(seconds(2));
    EXPECT_EQ(feedRequests(), 2u);
}

TEST_F(UpdaterRetry, IsNotPutOffByANetworkThatComesAndGoes) {
    transport.replies.erase(feedAddress);
    startAutomatic();
    for (int time = 0; time < 8; ++time) {
        network.come();
        pass(seconds(5));
    }
    EXPECT_GE(feedRequests(), 3u);
}

TEST_F(UpdaterRetry, IsNotPutOffByAClockThatIsSetBack) {
    transport.replies.erase(feedAddress);
    startAutomatic();
    clock.time -= hours(24 * 365);
    pass(hours(3));
    EXPECT_GE(feedRequests(), 2u);
}

TEST_F(UpdaterRetry, IsNotMadeThatNobodyWants) {
    transport.replies.erase(feedAddress);
    dictionary["SUEnableAutomaticChecks"] = false;
    check();
    acknowledge();
    network.come();
    pass(hours(5));
    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(UpdaterRetry, IsNotMadeByAnUpdaterThatHasGone) {
    transport.replies.erase(feedAddress);
    startAutomatic();
    made.reset();
    EXPECT_FALSE(network.action) << "it would be called for an updater that is no more";
    network.come();
    pass(hours(2));
    EXPECT_EQ(feedRequests(), 1u);
}

} // namespace kelo::test
