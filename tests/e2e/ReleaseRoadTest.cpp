// What a publisher does from one release to the next, as docs/RELEASING.md says it, and what a user
// sees of it: everything with the publisher's own tool, a real web server, and real clicks.
#include "e2e/UpdateProgramFixture.h"

#include "base/Translation.h"
#include "component/ScopedVariable.h"
#include "testing/LocaleFolder.h"

#include <libintl.h>

#include <clocale>

namespace kelo::e2e {

namespace {

using Names = std::vector<std::string>;

const VersionStamp bridgeVersion{"1.2", "3"};
const VersionStamp laterVersion{"1.3", "4"};
const VersionStamp brokenVersion{"1.4", "5"};

constexpr const char* updateWindow = "Software Update";
constexpr const char* crash = "kill -SEGV $$";

/// The texts of this process in German, as the program has them.
class German {
public:
    explicit German(const std::filesystem::path& build) {
        locales.add("de_DE");
        for (const auto& [name, value] : environment())
            variables.push_back(std::make_unique<test::ScopedVariable>(name.c_str(), value));
        std::setlocale(LC_MESSAGES, "");
        std::setlocale(LC_CTYPE, "");
        bindtextdomain(translationDomain, (build / "share/locale").c_str());
        bind_textdomain_codeset(translationDomain, "UTF-8");
    }
    ~German() { std::setlocale(LC_ALL, "C"); }
    German(const German&) = delete;
    German& operator=(const German&) = delete;

    bool isThere() const { return locales.holds("de_DE"); }
    std::map<std::string, std::string> environment() const {
        return {{"LOCPATH", locales.path()}, {"LC_ALL", "de_DE.UTF-8"}, {"LANGUAGE", "de"}};
    }

private:
    test::LocaleFolder locales;
    std::vector<std::unique_ptr<test::ScopedVariable>> variables;
};

/// A user who follows a publisher from release to release.
class ReleaseRoad : public UpdateProgramFixture {
protected:
    /// Takes the offer of the version; its pictures begin with this word.
    void takeOffer(const VersionStamp& before, const VersionStamp& version,
                   const std::string& word) const {
        askForUpdates();
        awaitText("A new version of Kelo is available");
        awaitText("Version " + version.version + " is available. You have version " +
                  before.version + ".");
        awaitInFront(updateWindow);
        look(word + "-1-offer");
        choose("Install Update");
        awaitText("The update is ready");
        awaitInFront(updateWindow);
        look(word + "-2-ready");
        EXPECT_EQ(installedVersion(), before.version);
        choose("Install and Relaunch");
    }

    /// Waits until the version has taken over, and has shown that it works.
    void awaitTakenOver(const VersionStamp& version, const std::string& word) const {
        awaitThat(version.version + " is installed",
                  [&] { return installedVersion() == version.version; });
        awaitThat("one copy runs", [&] { return runningCopies().size() == 1; });
        user.awaitLoginPage();
        look(word + "-3-relaunched");
        awaitThat("the version before is cleared away",
                  [&] { return homeContents() == Names{"Kelo"}; });
    }
};

} // namespace

TEST_F(ReleaseRoad, LeadsOverAnotherKeyAndBackFromAReleaseThatDoesNotStart) {
    pack(oldVersion, ownKey);
    generate(ownKey);
    unpack(oldVersion);
    startInstalled();
    user.awaitLoginPage();

    pack(newVersion, ownKey);
    generate(ownKey);
    takeOffer(oldVersion, newVersion, "1-first");
    awaitTakenOver(newVersion, "1-first");

    // The bridge: built for the next key, and signed with the present one.
    const SigningKey nextKey = makeKey("next.key");
    pack(bridgeVersion, nextKey);
    generate(ownKey, &nextKey);
    takeOffer(newVersion, bridgeVersion, "2-bridge");
    awaitTakenOver(bridgeVersion, "2-bridge");

    for (const auto& version : {oldVersion, newVersion, bridgeVersion})
        withdraw(version);
    pack(laterVersion, nextKey);
    generate(nextKey);
    takeOffer(bridgeVersion, laterVersion, "3-next-key");
    awaitTakenOver(laterVersion, "3-next-key");

    pack(brokenVersion, nextKey, crash);
    generate(nextKey);
    takeOffer(laterVersion, brokenVersion, "4-broken");
    awaitText("The update did not work");
    awaitText(
        "Kelo 1.4 did not start on this computer, so Kelo 1.3 was put back. You can go on with "
        "it; tell the publisher of Kelo, and try again with the version that follows.");
    user.awaitLoginPage();
    look("4-broken-3-put-back");
    EXPECT_EQ(installedVersion(), laterVersion.version);
    choose("OK");
    awaitNoText("The update did not work");
    awaitThat("nothing of the update is left", [&] { return homeContents() == Names{"Kelo"}; });
}

TEST_F(ReleaseRoad, IsClosedToTheCopyThatDidNotComeOverToTheNextKey) {
    const SigningKey nextKey = makeKey("next.key");
    pack(laterVersion, nextKey);
    generate(nextKey);
    startInstalled();
    user.awaitLoginPage();
    askForUpdates();
    awaitText("The update did not work");
    awaitText("Nothing shows that the list of updates comes from Kelo's publisher, so it was not "
              "used. Please try again later, or ask the publisher.");
    EXPECT_EQ(installedVersion(), oldVersion.version);
}

// At twice the size, with the keyboard alone.
TEST_F(ReleaseRoad, IsToldInTheUsersLanguage) {
    const German german(build());
    if (!german.isThere())
        GTEST_SKIP() << "this machine cannot make locales";
    publishThatOnlyRuns(crash);
    auto environment = german.environment();
    environment["GDK_SCALE"] = "2";
    startInstalled({"--check-for-updates"}, environment);
    const std::string title = translated("Software Update");
    ASSERT_NE(title, "Software Update");

    desktop().tree.await(rig::label(translated("A new version of %1 is available", {"Kelo"})));
    awaitInFront(title);
    look("1-offer");
    user.press("Return");
    desktop().tree.await(rig::label(translated("The update is ready")));
    awaitInFront(title);
    look("2-ready");
    user.press("Return");
    desktop().tree.await(rig::label(translated("The update did not work")));
    desktop().tree.await(rig::label(translated(
        "%1 %2 did not start on this computer, so %1 %3 was put back. You can go on "
        "with it; tell the publisher of %1, and try again with the version that follows.",
        {"Kelo", newVersion.version, oldVersion.version})));
    awaitInFront(title);
    look("3-put-back");
    EXPECT_EQ(installedVersion(), oldVersion.version);
    user.press("Escape");
    desktop().tree.awaitGone(rig::label(translated("The update did not work")));

    const SigningKey stranger = makeKey("stranger.key");
    withdraw(newVersion);
    pack(laterVersion, stranger);
    generate(stranger);
    ask("--check-for-updates");
    desktop().tree.await(rig::label(translated("The update did not work")));
    awaitInFront(title);
    look("4-refused");
}

} // namespace kelo::e2e
