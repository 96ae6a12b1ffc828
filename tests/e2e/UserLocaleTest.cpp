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
        environment = {{"LOCPATH", locales.path()}, {"LC_ALL", locale}, {"LANGUAGE", ""}};
        startKelo();
        user.awaitDrawn(rig::pageHeading("Languages"));
    }
    std::string help(const std::string& locale) const {
        rig::KeloProcess asked(build(), folder.path(), folder.path() / "help.log", {"--help"},
                               {{"LOCPATH", locales.path()}, {"LC_ALL", locale}});
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
    EXPECT_THAT(help("de_DE.UTF-8"), HasSubstr("Aufruf:\n  kelo [OPTION …]"));
    EXPECT_THAT(help("C"), HasSubstr("Usage:\n  kelo [OPTION…]"));
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
