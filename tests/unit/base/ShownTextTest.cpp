#include "base/ShownText.h"
#include "base/Utf8.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

std::string repeated(std::size_t count, std::string_view part) {
    std::string text;
    for (std::size_t each = 0; each < count; ++each)
        text += part;
    return text;
}

TEST(ShownName, OrdinaryNamesStayAsTheyAre) {
    for (const char* name : {"", "ada@example.org", "Ada Lovelace", "Żółć", "नमस्ते",
                             "می‌خواهم", "משה", "👩‍👩‍👧", "🇳🇱"})
        EXPECT_EQ(shownName(name), name);
}

TEST(ShownName, NameOfSixtyFourCharactersIsWholeAndOneMoreIsCut) {
    EXPECT_EQ(shownName(repeated(64, "é")), repeated(64, "é"));
    EXPECT_EQ(shownName(repeated(65, "é")), repeated(63, "é") + "…");
    EXPECT_EQ(shownName(repeated(5'000'000, "é")), repeated(63, "é") + "…");
    EXPECT_EQ(shownName(repeated(65, "🔑")), repeated(63, "🔑") + "…");
}

TEST(ShownName, LongerTextIsOneLineOfTheLengthThatIsAskedFor) {
    EXPECT_EQ(shownLine(repeated(100, "é"), 100), repeated(100, "é"));
    EXPECT_EQ(shownLine(repeated(101, "é"), 100), repeated(99, "é") + "…");
    EXPECT_EQ(shownLine("a\n\u202Eb", 100), "a b");
}

TEST(ShownName, LineBreaksAndRunsOfBlanksBecomeOneBlank) {
    EXPECT_EQ(shownName("Ada\r\n\t Lovelace"), "Ada Lovelace");
    EXPECT_EQ(shownName("Ada\u2028Lovelace\u00A0\u3000King"), "Ada Lovelace King");
    EXPECT_EQ(shownName("\n Ada \n"), "Ada");
    EXPECT_EQ(shownName(repeated(1000, " ") + "Ada" + repeated(1000, "\n")), "Ada");
}

TEST(ShownName, ControlsDirectionMarksAndInvisibleCharactersAreLeftOut) {
    using namespace std::string_view_literals;
    EXPECT_EQ(shownName("a\0b\x1B[31m\x7F\xC2\x9B"sv), "ab[31m");
    for (const char* mark :
         {"\u061C", "\u200B", "\u200E", "\u200F", "\u202A", "\u202B", "\u202C", "\u202D", "\u202E",
          "\u2060", "\u2066", "\u2067", "\u2068", "\u2069", "\u206F", "\u00AD", "\uFEFF", "\u3164"})
        EXPECT_EQ(shownName(std::string("eve") + mark + "ada"), "eveada");
    EXPECT_EQ(shownName(repeated(1'000'000, "\u202E") + "ada"), "ada");
}

TEST(ShownName, WhatIsNotUtf8IsReplaced) {
    EXPECT_EQ(shownName("a\xFF\x62\xE2\x80"), "a\uFFFDb\uFFFD");
}

TEST(ShownName, CutSparesALetterWithItsAccents) {
    const std::string letter = "e\u0301\u0323";
    EXPECT_EQ(shownName(repeated(22, letter)), repeated(21, letter) + "…");
    EXPECT_EQ(shownName(repeated(62, "a") + letter + "b"), repeated(62, "a") + "…");
}

TEST(ShownName, CutSparesAnEmojiOfSeveralParts) {
    EXPECT_EQ(shownName(repeated(61, "a") + "👩‍👩‍👧"), repeated(61, "a") + "…");
    EXPECT_EQ(shownName(repeated(62, "a") + "👍🏽!"), repeated(62, "a") + "…");
    EXPECT_EQ(shownName(repeated(62, "a") + "🇳🇱!"), repeated(62, "a") + "…");
    EXPECT_EQ(shownName(repeated(61, "a") + "🇳🇱🇧🇪"), repeated(61, "a") + "🇳🇱…");
}

TEST(ShownName, OneLetterWithEndlessAccentsIsCutAllTheSame) {
    EXPECT_EQ(shownName("e" + repeated(1000, "\u0301")), "e" + repeated(62, "\u0301") + "…");
}

TEST(ShownName, NoBlankStandsBeforeTheEllipsis) {
    EXPECT_EQ(shownName(repeated(62, "a") + " bcd"), repeated(62, "a") + "…");
}

TEST(ShownText, KeepsLinesAndLeavesOutWhatHidesOrTurnsAround) {
    EXPECT_EQ(shownText("", 9), "");
    EXPECT_EQ(shownText("one\ntwo\n\nthree", 99), "one\ntwo\n\nthree");
    EXPECT_EQ(shownText("a\r\nb\rc\u2028d\u2029e\u0085f\vg\fh", 99), "a\nb\nc\nd\ne\nf\ng\nh");
    EXPECT_EQ(shownText("a\tb\u3000c", 99), "a b c");
    EXPECT_EQ(shownText("\u202Eabc\u2066\u200B\x01 d", 99), "abc d");
    EXPECT_EQ(shownText(" a  b \n \n", 99), " a  b");
    EXPECT_EQ(shownText("a\xFFz", 99), "a\uFFFDz");
    EXPECT_EQ(shownText(std::string("a\0b", 3), 99), "ab");
    EXPECT_EQ(shownText("\u202Eabc\r", 3), "abc");
}

TEST(ShownText, HasAtMostSoManyCharacters) {
    EXPECT_EQ(shownText("äöü", 3), "äöü");
    EXPECT_EQ(shownText("äöüß", 3), "äö…");
    EXPECT_EQ(shownText(repeated(5'000'000, "\n") + "x", 3).size() < 20, true);
    EXPECT_EQ(shownText(repeated(5'000'000, "é"), 10), repeated(9, "é") + "…");
}

TEST(Shortened, TextHasAtMostSoManyCharactersWithTheEllipsis) {
    EXPECT_EQ(shortened("", 3), "");
    EXPECT_EQ(shortened("äöü", 3), "äöü");
    EXPECT_EQ(shortened("äöüß", 3), "äö…");
    EXPECT_EQ(shortened("a\nb\nc\nd", 4), "a\nb…");
    EXPECT_TRUE(isWellFormedUtf8(shortened(repeated(100, "🔑"), 10)));
}

} // namespace
} // namespace kelo
