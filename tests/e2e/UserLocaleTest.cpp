#include "e2e/ProgramFixture.h"
#include "testing/LocaleFolder.h"
#include "testing/rig/StandInService.h"

#include <gmock/gmock.h>

namespace kelo::e2e {

namespace {

/// Takes a file, and says how it reads and writes numbers.
constexpr const char* page = R"(<!doctype html><title>Languages</title>
<h1>Languages</h1>
<input type="file" aria-label="Your file">
<script>navigator.sendBeacon(`/number?${1234.5}&${Number('1.5')}`);</script>)";

/// Kelo under a locale that was made for the test.
class UserLocale : public ProgramFixture {
protected:
    void SetUp() override {}
    void TearDown() override {
        ProgramFixture::TearDown();
        pages.reset();
    }

    void startUnder(const std::string& locale) {
        // The demo service makes the certificate that its stand-in uses as well.
        startService();
        service.reset();
        pages = std::make_unique<rig::StandInService>(
            authority, std::map<std::string, std::string>{{"/", page}});
        startKeloUnder(locale);
        user.awaitDrawn(rig::pageHeading("Languages"));
    }
    void startKeloUnder(const std::string& locale) {
        environment = {{"LOCPATH", locales.path()}, {"LC_ALL", locale}, {"LANGUAGE", ""}};
        startKelo();
    }
    std::string answer(const std::string& option, const std::string& locale) const {
        rig::KeloProcess asked(build(), folder.path(), folder.path() / "answer.log", {option},
                               {{"LOCPATH", locales.path()}, {"LC_ALL", locale}, {"LANGUAGE", ""}});
        EXPECT_EQ(asked.awaitExit(rig::deadline), 0);
        return asked.printed();
    }
    /// The middle of a window's control, from the window's left edge.
    int middleOf(const rig::Wanted& wanted) const {
        const auto extents = desktop().tree.await(wanted).extents();
        return extents.x + extents.width / 2;
    }

    test::LocaleFolder locales;
    std::unique_ptr<rig::StandInService> pages;
};

constexpr int middleOfWindow = 550;
/// With the no-break space that German has before an ellipsis.
constexpr const char* findItem = "Suchen\u00a0…";
constexpr const char* findEntry = "Auf der Seite suchen";

using testing::ContainsRegex;
using testing::HasSubstr;

} // namespace

TEST_F(UserLocale, GermanIsWhatTheToolkitSpeaks) {
    locales.add("de_DE");
    if (!locales.holds("de_DE"))
        GTEST_SKIP() << "this machine cannot make locales";
    startUnder("de_DE.UTF-8");
    EXPECT_GT(middleOf(rig::button("Schließen")), middleOfWindow);
    user.click(rig::pageButton("Your file"));
    const rig::Wanted recentlyUsed = rig::label("Zuletzt verwendet");
    desktop().tree.await(recentlyUsed);
    picture("chooser");
    user.press("Escape");
    desktop().tree.awaitGone(recentlyUsed);
    EXPECT_TRUE(pages->wasAsked("/number?1234.5&1.5"));
}

TEST_F(UserLocale, IsThatOfTheHelp) {
    locales.add("de_DE");
    if (!locales.holds("de_DE"))
        GTEST_SKIP() << "this machine cannot make locales";
    const std::string german = answer("--help", "de_DE.UTF-8");
    EXPECT_THAT(german, HasSubstr("Aufruf:\n  kelo [OPTION …] [ADRESSE]"));
    EXPECT_THAT(german, ContainsRegex("--settings +Die Einstellungen öffnen\n"));
    const std::string english = answer("--help", "C");
    EXPECT_THAT(english, HasSubstr("Usage:\n  kelo [OPTION…] [ADDRESS]"));
    EXPECT_THAT(english, ContainsRegex("--settings +Open the settings\n"));
    EXPECT_EQ(answer("--version", "de_DE.UTF-8"), answer("--version", "C"));
}

TEST_F(UserLocale, GermanIsWhatKeloSpeaks) {
    locales.add("de_DE");
    if (!locales.holds("de_DE"))
        GTEST_SKIP() << "this machine cannot make locales";
    startUnder("de_DE.UTF-8");
    desktop().tree.await({rig::Place::windows, {rig::Role::menuItem}, "Account"});
    user.click({rig::Place::windows, {rig::Role::menuItem}, "Ansicht"});
    desktop().tree.await(rig::menuItem("Neu laden"));
    picture("view");
    user.press("Escape");
    desktop().tree.awaitGone(rig::menuItem("Neu laden"));
    user.chooseFromMenu("Ansicht", findItem);
    desktop().tree.awaitThat("the find bar has the keyboard", [] {
        const auto entry = desktop().tree.findFocused(rig::Role::entry);
        return entry && entry->name() == findEntry;
    });
    desktop().screen.keyboard.type("Languages");
    desktop().tree.await(rig::label("1 Stelle"));
    awaitAnnounced("1 Stelle");
    picture("find");
    user.press("Escape");
    // Nobody answers any more.
    pages.reset();
    user.press("F5");
    user.awaitDrawn(rig::pageHeading("Kelo kann localhost nicht erreichen"));
    user.awaitDrawn(rig::pageButton("Noch einmal versuchen"));
    EXPECT_TRUE(
        desktop().tree.pageSays("Verbindung zu localhost nicht möglich: Verbindung abgelehnt."));
    EXPECT_TRUE(desktop().tree.pageSays("Neuer Versuch in "));
}

TEST_F(UserLocale, GermanAsksForThePasskeyAfterThePromptThatIsTheSameEverywhere) {
    locales.add("de_DE");
    if (!locales.holds("de_DE"))
        GTEST_SKIP() << "this machine cannot make locales";
    startService();
    startKeloUnder("de_DE.UTF-8");
    user.awaitLoginPage();
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn(ada.firstName);
    user.chooseRegister();
    user.answerPrompt(ada.password);
    desktop().tree.await(rig::label("Passkey anlegen?"));
    desktop().tree.await(rig::button("Weiter"));
    desktop().tree.awaitThat("the sheet has the keyboard", [] {
        const auto active = desktop().screen.windows.active();
        return active && active->title == "Passkey anlegen?";
    });
    picture("sheet");
    user.press("Escape");
    user.awaitAlert("Die Passkey-Anfrage wurde abgebrochen.");
}

TEST_F(UserLocale, ArabicMirrorsTheWindow) {
    locales.add("ar_EG");
    if (!locales.holds("ar_EG"))
        GTEST_SKIP() << "this machine cannot make locales";
    startUnder("ar_EG.UTF-8");
    EXPECT_LT(middleOf(rig::button("أغلق")), middleOfWindow);
    EXPECT_GT(middleOf({rig::Place::windows, {rig::Role::menuItem}, "Account"}), middleOfWindow);
}

TEST_F(UserLocale, ThatIsNotInstalledIsEnglishAndEndsNothing) {
    startUnder("xx_XX.UTF-8");
    EXPECT_GT(middleOf(rig::button("Close")), middleOfWindow);
    EXPECT_TRUE(kelo->isRunning());
}

} // namespace kelo::e2e
