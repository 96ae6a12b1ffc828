#include "unit/updater/UpdaterFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using updater::CheckKind;
using updater::InstallKind;
using updater::RelaunchChoice;
using updater::UpdateChoice;

/// What the user sees of a check that they asked for.
using UpdaterWindows = UpdaterFixture;

TEST_F(UpdaterWindows, SayThatNothingIsNewer) {
    publish(release("1.0") + release("0.9"));
    check();
    EXPECT_THAT(user.shown, ElementsAre("checking", "message Kelo is up to date"));
    EXPECT_EQ(user.sentence, "Kelo 1.0 is the newest version there is.");
    acknowledge();
    EXPECT_FALSE(user.open);
}

TEST_F(UpdaterWindows, SayThatThisSystemIsTooOld) {
    publish(release("1.1", "<sparkle:minimumSystemVersion>9</sparkle:minimumSystemVersion>",
                    "sparkle:os=\"linux\""));
    check();
    EXPECT_EQ(lastShown(), "message This computer cannot run the newest version");
    EXPECT_THAT(user.sentence, HasSubstr("Kelo 1.1"));
    EXPECT_THAT(user.sentence, HasSubstr("Update the system first"));
}

TEST_F(UpdaterWindows, SayThatThisSystemIsTooNew) {
    publish(release("1.1", "<sparkle:maximumSystemVersion>2</sparkle:maximumSystemVersion>",
                    "sparkle:os=\"linux\""));
    check();
    EXPECT_THAT(user.sentence, HasSubstr("older system than this one"));
}

TEST_F(UpdaterWindows, SayThatUpdatesAreNotSetUp) {
    dictionary.erase("SUFeedURL");
    check();
    EXPECT_THAT(user.shown, ElementsAre("message Updates are not set up"));
    EXPECT_THAT(transport.requests, IsEmpty());
    EXPECT_EQ(store->state.checkCount, 0u);
    acknowledge();
    check();
    EXPECT_EQ(user.shown.size(), 2u) << "it can be asked again";
}

TEST_F(UpdaterWindows, SayThatTheFeedIsNotSecure) {
    dictionary["SUFeedURL"] = std::string("http://updates.example.com/appcast.xml");
    check();
    EXPECT_THAT(user.shown, ElementsAre("message Updates are not set up safely"));
    EXPECT_THAT(transport.requests, IsEmpty());
}

TEST_F(UpdaterWindows, OfferTheUpdateWithItsNotes) {
    dictionary["CFBundleShortVersionString"] = std::string("one");
    publish(signedRelease("1.1", "<sparkle:shortVersionString>two</sparkle:shortVersionString>"
                                 "<description>&lt;h2&gt;News&lt;/h2&gt;</description>"));
    check();
    ASSERT_TRUE(user.offer);
    EXPECT_EQ(user.offer->programName, "Kelo");
    EXPECT_EQ(user.offer->installedVersion, "one");
    EXPECT_EQ(user.offer->offeredVersion, "two");
    EXPECT_FALSE(user.offer->critical);
    EXPECT_FALSE(user.offer->informationalOnly);
    ASSERT_EQ(user.offer->releaseNotes.size(), 1u);
    EXPECT_EQ(user.offer->releaseNotes[0].kind, updater::ParagraphKind::heading);
    EXPECT_EQ(user.offerKind, CheckKind::userInitiated);
}

TEST_F(UpdaterWindows, TellTwoBuildsOfOneVersionApart) {
    dictionary["CFBundleShortVersionString"] = std::string("one");
    publish(signedRelease("1.1", "<sparkle:shortVersionString>one</sparkle:shortVersionString>"));
    check();
    EXPECT_EQ(lastShown(), "offer one (1.0) -> one (1.1)");
}

TEST_F(UpdaterWindows, FetchNotesThatStandElsewhere) {
    transport.replies["https://example.com/notes.md"] = bytesOf("# News");
    publish(signedRelease("1.1", "<sparkle:releaseNotesLink>https://example.com/notes.md"
                                 "</sparkle:releaseNotesLink>"));
    check();
    ASSERT_EQ(user.offer->releaseNotes.size(), 1u);
    EXPECT_EQ(user.offer->releaseNotes[0].runs[0].text, "News");
}

TEST_F(UpdaterWindows, DoWithoutNotesThatCannotBeFetched) {
    publish(signedRelease("1.1", "<sparkle:releaseNotesLink>https://example.com/gone"
                                 "</sparkle:releaseNotesLink>"));
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
    EXPECT_THAT(user.offer->releaseNotes, IsEmpty());
    EXPECT_EQ(log.size(), 1u);
}

TEST_F(UpdaterWindows, SayWhenAnUpdateIsCritical) {
    publish(signedRelease("1.1", "<sparkle:criticalUpdate/>"));
    check();
    EXPECT_TRUE(user.offer->critical);
    choose(UpdateChoice::remindLater);
    publish(signedRelease("1.1", "<sparkle:criticalUpdate/><sparkle:minimumAutoupdateVersion>1.1"
                                 "</sparkle:minimumAutoupdateVersion>"));
    check();
    EXPECT_FALSE(user.offer->critical) << "a major upgrade can be put off";
}

TEST_F(UpdaterWindows, CancelEndsTheCheck) {
    transport.hanging = {feedAddress};
    check();
    EXPECT_EQ(lastShown(), "checking");
    cancel();
    EXPECT_FALSE(user.open);
    transport.answer();
    loop.runUntilIdle();
    EXPECT_THAT(user.shown, ElementsAre("checking"));
    user.cancel(); // late, and once more
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1") << "another check can be made";
}

TEST_F(UpdaterWindows, CancelEndsTheDownloadAndDeletesIt) {
    transport.hanging = {archiveAddress};
    check();
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "download");
    EXPECT_EQ(leftovers().size(), 1u);
    cancel();
    EXPECT_FALSE(user.open);
    EXPECT_THAT(leftovers(), IsEmpty());
    EXPECT_TRUE(installer.prepared.empty());
    EXPECT_FALSE(everShown("failure"));
}

TEST_F(UpdaterWindows, DownloadShowsItsSizes) {
    check();
    choose(UpdateChoice::install);
    EXPECT_THAT(user.received, ElementsAre(0, 0, 4, 8, 12, 16, 20, 24, 26));
}

TEST_F(UpdaterWindows, InformationalUpdateOpensItsLink) {
    publish(signedRelease("1.1", "<link>https://example.com/kelo</link>"
                                 "<sparkle:informationalUpdate/>"));
    check();
    EXPECT_TRUE(user.offer->informationalOnly);
    choose(UpdateChoice::install);
    EXPECT_THAT(opened, ElementsAre("https://example.com/kelo"));
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress));
    EXPECT_FALSE(user.open);
}

TEST_F(UpdaterWindows, CopyThatCannotBeExchangedOpensTheLink) {
    installer.supportedKind = InstallKind::informationalOnly;
    publish(signedRelease("1.1", "<link>https://example.com/kelo</link>"));
    check();
    EXPECT_TRUE(user.offer->informationalOnly);
    choose(UpdateChoice::install);
    EXPECT_THAT(opened, ElementsAre("https://example.com/kelo"));
}

TEST_F(UpdaterWindows, WithoutALinkTheUserIsToldWhereToLook) {
    installer.supportedKind = InstallKind::informationalOnly;
    check();
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "message A newer version is available");
    EXPECT_THAT(opened, IsEmpty());
}

TEST_F(UpdaterWindows, SayWhatTheUserCanDoSoThatItCanBeInstalled) {
    installer.supportedKind = InstallKind::informationalOnly;
    installer.inTheWay = "Move it elsewhere.";
    check();
    EXPECT_EQ(user.offer->obstacle, "Move it elsewhere.");
    choose(UpdateChoice::install);
    EXPECT_THAT(user.sentence, HasSubstr("Move it elsewhere."));
}

TEST_F(UpdaterWindows, OfferTakenAfterDaysIsLookedAtAgain) {
    check();
    clock.time += std::chrono::hours(50);
    choose(UpdateChoice::install);
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress, feedAddress, archiveAddress));
    EXPECT_EQ(lastShown(), "ready 1.1");
    EXPECT_EQ(store->state.checkCount, 1u) << "the user asked once";
}

TEST_F(UpdaterWindows, OfferTakenSoonIsNotLookedAtAgain) {
    check();
    clock.time += std::chrono::hours(23);
    choose(UpdateChoice::install);
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress, archiveAddress));
}

TEST_F(UpdaterWindows, OfferTakenAfterDaysGivesWayToANewerOne) {
    check();
    clock.time += std::chrono::hours(50);
    publish(signedRelease("1.2"));
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.2");
    EXPECT_TRUE(installer.prepared.empty());
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "ready 1.2");
}

TEST_F(UpdaterWindows, OfferTakenAfterItWasWithdrawnSaysSo) {
    check();
    clock.time += std::chrono::hours(50);
    publish(release("1.0"));
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "message Kelo is up to date");
    EXPECT_TRUE(installer.prepared.empty());
}

TEST_F(UpdaterWindows, PackageIsVerifiedAndHandedOverWithoutARelaunch) {
    installer.supportedKind = InstallKind::handToPackageManager;
    check();
    EXPECT_FALSE(user.offer->informationalOnly);
    choose(UpdateChoice::install);
    EXPECT_EQ(installer.prepared, std::vector<std::string>{archive});
    EXPECT_EQ(installer.installations, 1);
    EXPECT_EQ(lastShown(), "message The update is ready to install");
}

TEST_F(UpdaterWindows, SkippedVersionIsKeptAndOfferedToWhoAsks) {
    check();
    choose(UpdateChoice::skipThisVersion);
    EXPECT_EQ(store->state.skippedVersion, "1.1");
    EXPECT_FALSE(user.open);
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
    choose(UpdateChoice::remindLater);
    EXPECT_EQ(store->state.skippedVersion, "") << "who wants to be reminded does not skip";
}

TEST_F(UpdaterWindows, LaterKeepsTheStagedUpdateForTheNextCheck) {
    check();
    choose(UpdateChoice::install);
    chooseRelaunch(RelaunchChoice::later);
    EXPECT_FALSE(user.open);
    EXPECT_EQ(installer.installations, 0);
    store->state.automaticChecks = false;
    const auto requests = transport.requests.size();
    check();
    EXPECT_EQ(lastShown(), "ready 1.1");
    EXPECT_EQ(transport.requests.size(), requests + 1) << "nothing is fetched twice";
    chooseRelaunch(RelaunchChoice::installAndRelaunch);
    EXPECT_EQ(installer.installations, 1);
}

TEST_F(UpdaterWindows, NewerVersionTakesThePlaceOfTheStagedOne) {
    check();
    choose(UpdateChoice::install);
    chooseRelaunch(RelaunchChoice::later);
    publish(signedRelease("1.2"));
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.2");
}

TEST_F(UpdaterWindows, SecondRequestBringsTheWindowToTheFront) {
    check();
    const auto shown = user.shown;
    check();
    EXPECT_EQ(user.shown, shown);
    EXPECT_EQ(user.broughtToFront, 1);
    EXPECT_EQ(transport.requests.size(), 1u);
    EXPECT_EQ(user.driversMade, 1);
}

TEST_F(UpdaterWindows, NothingIsMadeBeforeTheFirstCheck) {
    start();
    loop.runUntilIdle();
    EXPECT_EQ(user.driversMade, 0);
    EXPECT_THAT(transport.requests, IsEmpty());
}

TEST_F(UpdaterWindows, UpdaterMayGoWhileACheckIsUnderWay) {
    check();
    made.reset();
    EXPECT_TRUE(user.choice);
    user.choice->resume(UpdateChoice::install);
    loop.runUntilIdle();
    EXPECT_EQ(transport.requests.size(), 1u);
}

TEST_F(UpdaterWindows, UpdaterMayGoWhileADownloadIsUnderWay) {
    transport.hanging = {archiveAddress};
    check();
    choose(UpdateChoice::install);
    made.reset();
    EXPECT_THAT(leftovers(), IsEmpty());
    transport.answer();
    loop.runUntilIdle();
}

TEST_F(UpdaterWindows, OfferReleasesOfAChannelToThoseWhoChoseIt) {
    publish(signedRelease("1.1", "<sparkle:channel>beta</sparkle:channel>"));
    check();
    EXPECT_EQ(lastShown(), "message Kelo is up to date");
    acknowledge();
    store->state.channels = {"nightly", "beta"};
    start();
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1") << "by a line of the state";
    store->state.channels = {};
    dictionary["KeloUpdateChannels"] = std::string("beta");
    start();
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1") << "by the build";
}

TEST_F(UpdaterWindows, ProblemsOfTheFeedGoToTheJournal) {
    publish("<item><title>odd</title></item>" + signedRelease("1.1"));
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_THAT(log.front(), HasSubstr("odd"));
}

} // namespace kelo::test
