#include "linux/startup/UserLocale.h"

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
};

} // namespace

TEST_F(UserLocale, IsThatOfTheEnvironment) {
    startup::followUserLocale();
    EXPECT_EQ(of(LC_MESSAGES), "de_DE.UTF-8");
    EXPECT_EQ(of(LC_COLLATE), "de_DE.UTF-8");
    EXPECT_EQ(sunday(), "Sonntag");
    EXPECT_EQ(characters(), "UTF-8");
}

TEST_F(UserLocale, LeavesNumbersTheirPoint) {
    startup::followUserLocale();
    char text[8];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    EXPECT_STREQ(text, "1.5");
    EXPECT_EQ(std::strtod("1.5", nullptr), 1.5);
    EXPECT_EQ(of(LC_NUMERIC), "C");
}

TEST_F(UserLocale, LeavesTheStreamsOfCppAsTheyAre) {
    startup::followUserLocale();
    EXPECT_EQ(std::locale(), std::locale::classic());
}

TEST_F(UserLocale, ThatIsNotInstalledLeavesEnglishInUtf8) {
    const ScopedVariable unknown("LC_ALL", "xx_XX.UTF-8");
    startup::followUserLocale();
    EXPECT_EQ(of(LC_MESSAGES), "C");
    EXPECT_EQ(sunday(), "Sunday");
    EXPECT_EQ(characters(), "UTF-8");
}

TEST_F(UserLocale, ThatIsNotNamedLeavesEnglishInUtf8) {
    for (const char* none : {"C", "POSIX"}) {
        const ScopedVariable unnamed("LC_ALL", none);
        startup::followUserLocale();
        EXPECT_EQ(sunday(), "Sunday");
        EXPECT_EQ(characters(), "UTF-8");
    }
}

TEST_F(UserLocale, OfOneCategoryThatIsNotInstalledLeavesTheOthers) {
    const ScopedVariable unknown("LC_TIME", "xx_XX.UTF-8");
    startup::followUserLocale();
    EXPECT_EQ(of(LC_MESSAGES), "de_DE.UTF-8");
    EXPECT_EQ(of(LC_CTYPE), "de_DE.UTF-8");
    EXPECT_EQ(sunday(), "Sunday");
}

} // namespace kelo::test
