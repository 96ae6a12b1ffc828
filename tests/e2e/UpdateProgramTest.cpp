// A copy of Kelo in somebody's home, from one version to the next: everything by real clicks and
// keys, against a real web server, with what the publisher's tool made.
#include "e2e/UpdateProgramFixture.h"

#include <fstream>

namespace kelo::e2e {

namespace {

using Names = std::vector<std::string>;

constexpr const char* offered = "A new version of Kelo is available";
constexpr const char* updateWindow = "Software Update";
const rig::Wanted progressBar{rig::Place::windows, {rig::Role::progressBar}, "Progress"};

} // namespace

TEST_F(UpdateProgramFixture, GoesFromOneVersionToTheNextAndComesBackAsIt) {
    publish();
    startInstalled();
    user.awaitLoginPage();

    server->holdBack();
    askForUpdates();
    awaitText("Checking for updates…");
    awaitInFront(updateWindow);
    look("1-checking");
    server->letGo();

    awaitText(offered);
    awaitText("Version 1.1 is available. You have version 1.0.");
    desktop().tree.await(rig::button("Skip This Version"));
    desktop().tree.await(rig::button("Remind Me Later"));
    look("2-offer");
    server->holdBack();
    choose("Install Update");

    awaitText("Downloading the update…");
    awaitThat("the bar has moved", [&] {
        const auto bar = desktop().tree.find(progressBar);
        return bar && bar->value() > 0;
    });
    awaitInFront(updateWindow);
    look("3-downloading");
    server->letGo();

    awaitText("The update is ready");
    awaitText("Kelo will close, and open again as version 1.1. If you choose “Later”, its next "
              "start is that version.");
    awaitInFront(updateWindow);
    look("4-ready");
    EXPECT_EQ(installedVersion(), "1.0");
    choose("Install and Relaunch");

    const auto old = program->awaitExit(rig::deadline);
    EXPECT_EQ(old, 0) << program->printed();
    user.awaitLoginPage();
    EXPECT_EQ(installedVersion(), "1.1");
    awaitThat("one copy runs", [&] { return runningCopies().size() == 1; });
    look("5-relaunched");

    ask("--settings");
    awaitText("1.1 (2)");
    awaitText("localhost");
    awaitInFront("Settings");
    look("6-settings");
    user.press("Escape");
    awaitNoText("1.1 (2)");

    askForUpdates();
    awaitText("Kelo is up to date");
    awaitText("Kelo 1.1 is the newest version there is.");
    look("7-up-to-date");
    choose("OK");
    awaitText("Check for updates automatically?");
    awaitInFront(updateWindow);
    look("8-automatically");
    choose("Don’t Check");
    awaitNoText("Check for updates automatically?");

    awaitThat("the old version is cleared away", [&] { return homeContents() == Names{"Kelo"}; });
}

TEST_F(UpdateProgramFixture, RefusesWhatAnotherKeySigned) {
    publishByAStranger();
    startInstalled();
    user.awaitLoginPage();
    askForUpdates();
    awaitText("The update did not work");
    awaitText("Nothing shows that the list of updates comes from Kelo's publisher, so it was not "
              "used. Please try again later, or ask the publisher.");
    look("refused");
    choose("OK");
    awaitNoText("The update did not work");
    EXPECT_EQ(installedVersion(), "1.0");
    awaitThat("nothing of the update is left", [&] { return homeContents() == Names{"Kelo"}; });
    EXPECT_TRUE(program->isRunning());
}

TEST_F(UpdateProgramFixture, PutsTheVersionBeforeBackWhenTheNewOneDoesNotStart) {
    publishThatOnlyRuns("kill -SEGV $$");
    startInstalled();
    user.awaitLoginPage();
    askForUpdates();
    awaitText(offered);
    choose("Install Update");
    awaitText("The update is ready");
    choose("Install and Relaunch");
    program->awaitExit(rig::deadline);
    awaitText("The update did not work");
    awaitText(
        "Kelo 1.1 did not start on this computer, so Kelo 1.0 was put back. You can go on with "
        "it; tell the publisher of Kelo, and try again with the version that follows.");
    EXPECT_EQ(installedVersion(), "1.0");
    user.awaitLoginPage();
    look("put-back");
    choose("OK");
    awaitNoText("The update did not work");
    awaitThat("nothing of the update is left", [&] { return homeContents() == Names{"Kelo"}; });
    EXPECT_EQ(runningCopies().size(), 1U);
}

TEST_F(UpdateProgramFixture, OffersASkippedVersionAgainToTheUserWhoAsks) {
    publish();
    startInstalled();
    user.awaitLoginPage();
    askForUpdates();
    awaitText(offered);
    choose("Skip This Version");
    awaitNoText(offered);
    askForUpdates();
    awaitText(offered);
    awaitInFront(updateWindow);
    EXPECT_EQ(installedVersion(), "1.0");
}

TEST_F(UpdateProgramFixture, SettingsShowVersionAndHostAndGoWithEscapeOrTheirCloseButton) {
    startInstalled({"--settings"});
    awaitText("1.0 (1)");
    awaitText("localhost");
    awaitInFront("Settings");
    look("settings");
    user.press("Escape");
    awaitNoText("1.0 (1)");
    ask("--settings");
    awaitText("1.0 (1)");
    choose("Close");
    awaitNoText("1.0 (1)");
}

// At twice the size, with the keyboard alone, and without the program's main window.
TEST_F(UpdateProgramFixture, KeepsTheOldVersionUntilTheNextStartForAUserWhoPutsItOff) {
    publish();
    startInstalled({"--check-for-updates"}, {{"GDK_SCALE", "2"}});
    desktop().tree.await(rig::label(offered));
    awaitInFront(updateWindow);
    look("1-offer");
    user.press("Return");
    desktop().tree.await(rig::label("The update is ready"));
    awaitInFront(updateWindow);
    look("2-ready");
    user.press("Escape");
    awaitNoText("The update is ready");
    ask("--settings");
    desktop().tree.await(rig::label("1.0 (1)"));
    awaitInFront("Settings");
    look("3-settings");
    EXPECT_EQ(installedVersion(), "1.0");
    user.press("Escape");
    ask("--quit");
    EXPECT_EQ(program->awaitExit(rig::deadline), 0);
    startInstalled();
    user.awaitLoginPage();
    EXPECT_EQ(installedVersion(), "1.1");
    look("4-taken-over");
    awaitThat("one copy runs", [&] { return runningCopies().size() == 1; });
    awaitThat("the old version is cleared away", [&] { return homeContents() == Names{"Kelo"}; });
}

TEST_F(UpdateProgramFixture, NamesTheFileThatKeepsItFromBeingUpdated) {
    publish();
    std::ofstream(installed / "bin/notes.txt") << "mine";
    startInstalled();
    user.awaitLoginPage();
    askForUpdates();
    awaitText("Version 1.1 is available. You have version 1.0. It cannot be installed from here. "
              "The folder “" +
              installed.string() +
              "” contains a file that is not Kelo's, “bin/notes.txt”. Move it elsewhere and start "
              "Kelo again.");
    look("stray-file");
}

} // namespace kelo::e2e
