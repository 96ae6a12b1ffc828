#include "unit/updater/UpdaterFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::IsEmpty;
using updater::CheckKind;
using updater::RelaunchChoice;
using updater::UpdateChoice;

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

/// Scheduled checks.
using UpdaterSchedule = UpdaterFixture;

TEST_F(UpdaterSchedule, OverdueCheckIsMadeAtOnce) {
    store->state.lastCheck = clock.time - hours(25);
    startAutomatic();
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_EQ(store->state.lastCheck, clock.time - seconds(0));
}

TEST_F(UpdaterSchedule, NextCheckIsAnIntervalAfterTheLast) {
    publish(release("1.0"));
    store->state.lastCheck = clock.time - hours(20);
    startAutomatic();
    pass(hours(4) - minutes(1));
    EXPECT_EQ(feedRequests(), 0u);
    pass(minutes(2));
    EXPECT_EQ(feedRequests(), 1u);
    pass(hours(23));
    EXPECT_EQ(feedRequests(), 1u);
    pass(hours(2));
    EXPECT_EQ(feedRequests(), 2u);
}

TEST_F(UpdaterSchedule, LastCheckInTheFutureCountsAsNow) {
    store->state.lastCheck = clock.time + hours(24 * 365);
    publish(release("1.0"));
    startAutomatic();
    EXPECT_EQ(feedRequests(), 0u);
    pass(hours(25));
    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(UpdaterSchedule, ClockSetBackDoesNotEndTheChecks) {
    publish(release("1.0"));
    startAutomatic();
    EXPECT_EQ(feedRequests(), 1u);
    clock.time -= hours(24 * 365);
    pass(hours(26));
    EXPECT_EQ(feedRequests(), 2u);
}

TEST_F(UpdaterSchedule, SleepOfTheComputerCounts) {
    publish(release("1.0"));
    startAutomatic();
    clock.time += hours(48); // while no timer ran
    loop.advance(hours(1));
    EXPECT_EQ(feedRequests(), 2u);
}

TEST_F(UpdaterSchedule, NothingIsCheckedUnlessItIsWanted) {
    start();
    pass(hours(100));
    EXPECT_EQ(feedRequests(), 0u);
    EXPECT_EQ(loop.pendingTimers(), 0u);

    dictionary["SUEnableAutomaticChecks"] = false;
    store->state.automaticChecks = true;
    start();
    pass(hours(100));
    EXPECT_EQ(feedRequests(), 0u) << "the bundle decides";
}

TEST_F(UpdaterSchedule, IntervalOfZeroTurnsChecksOff) {
    dictionary["SUScheduledCheckInterval"] = std::int64_t(0);
    startAutomatic();
    pass(hours(100));
    EXPECT_EQ(feedRequests(), 0u);
}

TEST_F(UpdaterSchedule, WithoutAFeedNothingIsCheckedOrSaid) {
    dictionary.erase("SUFeedURL");
    startAutomatic();
    pass(hours(100));
    EXPECT_THAT(user.shown, IsEmpty());
}

TEST_F(UpdaterSchedule, ShowsNothingWhenThereIsNothing) {
    publish(release("1.0"));
    startAutomatic();
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_EQ(user.driversMade, 0);
}

TEST_F(UpdaterSchedule, ShowsNothingWhenItFails) {
    transport.replies.erase(feedAddress);
    startAutomatic();
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_EQ(user.driversMade, 0);
    EXPECT_EQ(log.size(), 1u);
}

TEST_F(UpdaterSchedule, NothingLargeIsFetchedUnaskedOverAMeteredNetwork) {
    dictionary["SUAutomaticallyUpdate"] = true;
    network.metered = true;
    startAutomatic();
    EXPECT_THAT(user.shown, ElementsAre("offer 1.0 -> 1.1"));
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress));
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "ready 1.1") << "who asks for it pays for it";
}

TEST_F(UpdaterSchedule, ShowsNothingForASkippedVersion) {
    store->state.skippedVersion = "1.1";
    startAutomatic();
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_EQ(user.driversMade, 0);
}

TEST_F(UpdaterSchedule, OfferLeavesTheFocusWhereItIs) {
    startAutomatic();
    EXPECT_THAT(user.shown, ElementsAre("offer 1.0 -> 1.1"));
    EXPECT_EQ(user.offerKind, CheckKind::scheduled);
    EXPECT_EQ(user.broughtToFront, 0);
}

TEST_F(UpdaterSchedule, OfferPutOffComesBackAnIntervalLater) {
    startAutomatic();
    choose(UpdateChoice::remindLater);
    pass(hours(23));
    EXPECT_EQ(user.shown.size(), 1u);
    pass(hours(2));
    EXPECT_EQ(user.shown.size(), 2u);
}

TEST_F(UpdaterSchedule, OpenOfferIsNotFollowedByAnother) {
    startAutomatic();
    pass(hours(24 * 7));
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_EQ(user.shown.size(), 1u);
    choose(UpdateChoice::remindLater);
    pass(seconds(1));
    EXPECT_EQ(feedRequests(), 2u) << "overdue since";
}

TEST_F(UpdaterSchedule, FailureAfterTheUsersAnswerIsShown) {
    transport.replies.erase(archiveAddress);
    startAutomatic();
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "failure");
}

TEST_F(UpdaterSchedule, OfferComesToTheFrontForWhoAsks) {
    startAutomatic();
    check();
    EXPECT_EQ(user.broughtToFront, 1);
    EXPECT_EQ(user.shown.size(), 1u);
}

TEST_F(UpdaterSchedule, SilentCheckGoesOnBeforeTheUserWhoAsks) {
    transport.hanging = {feedAddress};
    startAutomatic();
    EXPECT_THAT(user.shown, IsEmpty());
    check();
    EXPECT_THAT(user.shown, ElementsAre("checking"));
    EXPECT_EQ(feedRequests(), 1u);
    publish(release("1.0"));
    transport.answer();
    loop.runUntilIdle();
    EXPECT_EQ(lastShown(), "message Kelo is up to date");
}

TEST_F(UpdaterSchedule, TakenOverCheckIgnoresTheSkip) {
    store->state.skippedVersion = "1.1";
    transport.hanging = {feedAddress};
    startAutomatic();
    check();
    transport.answer();
    loop.runUntilIdle();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
    EXPECT_EQ(user.offerKind, CheckKind::userInitiated);
}

TEST_F(UpdaterSchedule, TakenOverCheckCanBeCancelled) {
    transport.hanging = {feedAddress};
    startAutomatic();
    check();
    cancel();
    EXPECT_FALSE(user.open);
    EXPECT_THAT(user.shown, ElementsAre("checking"));
}

TEST_F(UpdaterSchedule, DownloadsUnaskedAndAsksForTheRelaunch) {
    dictionary["SUAutomaticallyUpdate"] = true;
    startAutomatic();
    EXPECT_THAT(user.shown, ElementsAre("ready 1.1"));
    EXPECT_EQ(installer.prepared, std::vector<std::string>{archive});
    EXPECT_EQ(installer.installations, 0);
    chooseRelaunch(RelaunchChoice::installAndRelaunch);
    EXPECT_EQ(installer.installations, 1);
}

TEST_F(UpdaterSchedule, AsksFirstWhereUnaskedDownloadsAreForbidden) {
    dictionary["SUAutomaticallyUpdate"] = true;
    dictionary["SUAllowsAutomaticUpdates"] = false;
    startAutomatic();
    EXPECT_THAT(user.shown, ElementsAre("offer 1.0 -> 1.1"));
}

TEST_F(UpdaterSchedule, AsksFirstForMajorUpgradesAndForeignCopies) {
    dictionary["SUAutomaticallyUpdate"] = true;
    publish(signedRelease("1.1", "<sparkle:minimumAutoupdateVersion>1.1"
                                 "</sparkle:minimumAutoupdateVersion>"));
    startAutomatic();
    EXPECT_THAT(user.shown, ElementsAre("offer 1.0 -> 1.1"));
    user.shown.clear();
    publish(signedRelease("1.1"));
    installer.supportedKind = updater::InstallKind::handToPackageManager;
    store->state.lastCheck.reset();
    start();
    pass(seconds(1));
    EXPECT_THAT(user.shown, ElementsAre("offer 1.0 -> 1.1"));
}

TEST_F(UpdaterSchedule, SilentDownloadThatFailsShowsNothing) {
    dictionary["SUAutomaticallyUpdate"] = true;
    transport.replies[archiveAddress] = bytesOf("something else entirely!!!");
    startAutomatic();
    EXPECT_EQ(transport.requests.size(), 2u);
    EXPECT_EQ(user.driversMade, 0);
    EXPECT_THAT(leftovers(), IsEmpty());
    EXPECT_EQ(log.size(), 1u);
}

TEST_F(UpdaterSchedule, SilentDownloadGoesOnBeforeTheUserWhoAsks) {
    dictionary["SUAutomaticallyUpdate"] = true;
    transport.hanging = {archiveAddress};
    startAutomatic();
    EXPECT_THAT(user.shown, IsEmpty());
    check();
    EXPECT_THAT(user.shown, ElementsAre("download"));
    EXPECT_EQ(user.received.back(), 4u);
    transport.answer();
    loop.runUntilIdle();
    EXPECT_EQ(lastShown(), "ready 1.1");
}

TEST_F(UpdaterSchedule, UserIsAskedAfterTheSecondCheckOfTheirLife) {
    publish(release("1.0"));
    check();
    acknowledge();
    EXPECT_FALSE(user.automatic);
    start();
    check();
    EXPECT_FALSE(user.automatic) << "not while the check is still shown";
    acknowledge();
    EXPECT_EQ(lastShown(), "automatic checks of Kelo");
    answer(user.automatic, true);
    EXPECT_EQ(store->state.automaticChecks, true);
    EXPECT_FALSE(user.open);
    pass(hours(25));
    EXPECT_EQ(feedRequests(), 3u);
}

TEST_F(UpdaterSchedule, UserIsAskedNothingByAProgramThatMakesRoomForTheNextOne) {
    store->state.checkCount = 1;
    check();
    choose(UpdateChoice::install);
    chooseRelaunch(RelaunchChoice::installAndRelaunch);
    EXPECT_EQ(installer.installations, 1);
    EXPECT_FALSE(user.automatic);
    EXPECT_FALSE(user.open);
}

TEST_F(UpdaterSchedule, UserIsAskedOnceAPackageWasHandedOver) {
    store->state.checkCount = 1;
    installer.supportedKind = updater::InstallKind::handToPackageManager;
    check();
    choose(UpdateChoice::install);
    acknowledge();
    EXPECT_EQ(installer.installations, 1);
    EXPECT_TRUE(user.automatic) << "the program goes on";
}

TEST_F(UpdaterSchedule, NoIsNoAndIsNotAskedAgain) {
    publish(release("1.0"));
    store->state.checkCount = 1;
    check();
    acknowledge();
    answer(user.automatic, false);
    EXPECT_EQ(store->state.automaticChecks, false);
    start();
    check();
    acknowledge();
    EXPECT_FALSE(user.automatic);
    pass(hours(100));
    EXPECT_EQ(feedRequests(), 2u);
}

TEST_F(UpdaterSchedule, UserIsNotAskedWhatTheBundleDecides) {
    publish(release("1.0"));
    store->state.checkCount = 5;
    for (const bool decision : {true, false}) {
        dictionary["SUEnableAutomaticChecks"] = decision;
        start();
        check();
        acknowledge();
        EXPECT_FALSE(user.automatic);
    }
    dictionary.erase("SUEnableAutomaticChecks");
    dictionary["SUScheduledCheckInterval"] = std::int64_t(0);
    start();
    check();
    acknowledge();
    EXPECT_FALSE(user.automatic);
}

TEST_F(UpdaterSchedule, TimersOfAnUpdaterThatHasGoneDoNothing) {
    store->state.lastCheck = clock.time;
    startAutomatic();
    made.reset();
    EXPECT_EQ(loop.pendingTimers(), 0u);
    pass(hours(50));
    EXPECT_EQ(feedRequests(), 0u);
}

} // namespace kelo::test
