#include "linux/locale/UserLocale.h"

#include "base/Translation.h"
#include "component/ScopedVariable.h"
#include "testing/LocaleFolder.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <langinfo.h>
#include <locale>
#include <memory>
#include <string>

namespace kelo::test {

namespace {

/// A process that follows the locale which a test names in the environment.
class UserLocale : public testing::Test {
protected:
    static void SetUpTestSuite() {
        locales = std::make_unique<LocaleFolder>();
        locales->add("de_DE");
        locales->add("de_DE", "ISO-8859-1");
    }
    static void TearDownTestSuite() { locales.reset(); }

    void SetUp() override {
        if (!locales->holds("de_DE"))
            GTEST_SKIP() << "this machine cannot make locales";
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }

    static std::string of(int category) { return std::setlocale(category, nullptr); }
    static std::string sunday() { return nl_langinfo(DAY_1); }
    static std::string characters() { return nl_langinfo(CODESET); }

    static inline std::unique_ptr<LocaleFolder> locales;
    const ScopedVariable path{"LOCPATH", locales->path()};
    const ScopedVariable all{"LC_ALL", ""};
    const ScopedVariable language{"LANG", "de_DE.UTF-8"};
    const ScopedVariable languages{"LANGUAGE", std::nullopt};
};

/// The same process with the catalogues of this build.
class TranslationCatalogues : public UserLocale {
protected:
    static std::string close() {
        locale::followUserLocale();
        locale::findTranslations(KELO_BUILD_FOLDER);
        return translated("Close");
    }
};

} // namespace

TEST_F(UserLocale, IsThatOfTheEnvironment) {
    locale::followUserLocale();
    EXPECT_EQ(of(LC_MESSAGES), "de_DE.UTF-8");
    EXPECT_EQ(of(LC_COLLATE), "de_DE.UTF-8");
    EXPECT_EQ(sunday(), "Sonntag");
    EXPECT_EQ(characters(), "UTF-8");
}

TEST_F(UserLocale, LeavesNumbersTheirPoint) {
    locale::followUserLocale();
    char text[8];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    EXPECT_STREQ(text, "1.5");
    EXPECT_EQ(std::strtod("1.5", nullptr), 1.5);
    EXPECT_EQ(of(LC_NUMERIC), "C");
}

TEST_F(UserLocale, LeavesTheStreamsOfCppAsTheyAre) {
    locale::followUserLocale();
    EXPECT_EQ(std::locale(), std::locale::classic());
}

TEST_F(UserLocale, ThatIsNotInstalledLeavesEnglishInUtf8) {
    const ScopedVariable unknown("LC_ALL", "xx_XX.UTF-8");
    locale::followUserLocale();
    EXPECT_EQ(of(LC_MESSAGES), "C");
    EXPECT_EQ(sunday(), "Sunday");
    EXPECT_EQ(characters(), "UTF-8");
}

TEST_F(UserLocale, ThatIsNotNamedLeavesEnglishInUtf8) {
    for (const char* none : {"C", "POSIX"}) {
        const ScopedVariable unnamed("LC_ALL", none);
        locale::followUserLocale();
        EXPECT_EQ(sunday(), "Sunday");
        EXPECT_EQ(characters(), "UTF-8");
    }
}

TEST_F(UserLocale, OfOneCategoryThatIsNotInstalledLeavesTheOthers) {
    const ScopedVariable unknown("LC_TIME", "xx_XX.UTF-8");
    locale::followUserLocale();
    EXPECT_EQ(of(LC_MESSAGES), "de_DE.UTF-8");
    EXPECT_EQ(of(LC_CTYPE), "de_DE.UTF-8");
    EXPECT_EQ(sunday(), "Sunday");
}

TEST_F(TranslationCatalogues, AreThoseOfTheUsersLanguage) {
    EXPECT_EQ(close(), "Schließen");
}

TEST_F(TranslationCatalogues, AreTriedInTheOrderThatTheUserWants) {
    const ScopedVariable wanted("LANGUAGE", "sv:nl:de");
    EXPECT_EQ(close(), "Sluiten");
}

TEST_F(TranslationCatalogues, AreUtf8WhateverTheLocaleHas) {
    const ScopedVariable old("LC_ALL", "de_DE.ISO-8859-1");
    EXPECT_EQ(close(), "Schließen");
    EXPECT_EQ(characters(), "ISO-8859-1");
}

TEST_F(TranslationCatalogues, AreNotUsedWhereNoLanguageIsNamed) {
    const ScopedVariable unnamed("LC_ALL", "C");
    const ScopedVariable wanted("LANGUAGE", "de");
    EXPECT_EQ(close(), "Close");
}

TEST_F(TranslationCatalogues, ThatAreMissingLeaveEnglish) {
    locale::followUserLocale();
    locale::findTranslations(locales->path());
    EXPECT_EQ(translated("Close"), "Close");
}

TEST_F(TranslationCatalogues, KnowOneAndMany) {
    close();
    EXPECT_EQ(translatedCount("%1 place", "%1 places", 1), "1 Stelle");
    EXPECT_EQ(translatedCount("%1 place", "%1 places", 2), "2 Stellen");
    const ScopedVariable french("LANGUAGE", "fr");
    close();
    EXPECT_EQ(translatedCount("%1 place", "%1 places", 0), "0 endroit");
}

} // namespace kelo::test
