#include "base/Translation.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

TEST(Translation, ATextWithoutTranslationStaysInEnglish) {
    EXPECT_EQ(translated("Nobody has translated this."), "Nobody has translated this.");
}

TEST(Translation, ValuesStandWhereTheTextNamesThem) {
    EXPECT_EQ(translated("%2 of %1, %1", {"report.pdf", "3 MB"}), "3 MB of report.pdf, report.pdf");
}

TEST(Translation, AValueThatLooksLikeAPlaceholderIsLeftAlone) {
    EXPECT_EQ(translated("%1 and %2", {"%2", "%1"}), "%2 and %1");
}

TEST(Translation, WhatNamesNoValueStays) {
    EXPECT_EQ(translated("100 % of %1, %0, %3 and %", {"it"}), "100 % of it, %0, %3 and %");
}

TEST(Translation, OneAndManyAreTold) {
    EXPECT_EQ(translatedCount("%1 place", "%1 places", 1), "1 place");
    EXPECT_EQ(translatedCount("%1 place", "%1 places", 0), "0 places");
    EXPECT_EQ(translatedCount("%1 place", "%1 places", 12), "12 places");
}

TEST(Translation, OneAndManyTakeFurtherValues) {
    const auto text = [](unsigned long count) {
        return translatedCount("%2 has %1 place", "%2 has %1 places", count, {"It"});
    };
    EXPECT_EQ(text(1), "It has 1 place");
    EXPECT_EQ(text(2), "It has 2 places");
}

TEST(Translation, AMarkedTextIsItself) {
    static_assert(std::string_view(untranslated("Later")) == "Later");
}

} // namespace
} // namespace kelo
