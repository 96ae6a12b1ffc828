#include "common/Results.h"
#include "common/BarChart.h"
#include "common/MomentFile.h"
#include "common/Text.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <string>

namespace kelo::bench {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

Results twoPrograms() {
    Results results("start", "Kelo");
    results.add("painted", "ms", "Kelo", {100, 200, 300});
    results.add("painted", "ms", "other <1>", {50, 400, 600});
    results.add("memory", "MiB", "Kelo", 70);
    return results;
}

TEST(Results, ALineHasMedianRangeAndTheRatioOfTheRounds) {
    const std::string table = twoPrograms().table();
    EXPECT_THAT(table, ContainsRegex("painted, ms +median +lowest +highest +p95   times Kelo\n"));
    EXPECT_THAT(table, ContainsRegex("  Kelo +200.00 +100.00 +300.00 +300.00\n"));
    EXPECT_THAT(
        table,
        ContainsRegex("  other <1> +400.00 +50.00 +600.00 +600.00   2.00 \\(0.50 to 2.00\\)\n"));
}

TEST(Results, WithoutAReferenceNothingIsCompared) {
    Results results("idle");
    results.add("wake-ups", "/min", "a", 1);
    results.add("wake-ups", "/min", "b", 2);
    EXPECT_THAT(results.table(), Not(HasSubstr("times")));
}

TEST(Results, ADroppedSubjectIsNowhereAndItsNoteIs) {
    auto results = twoPrograms();
    results.drop("other <1>");
    results.note("other failed");
    EXPECT_THAT(results.table(), Not(HasSubstr("other <1>")));
    EXPECT_THAT(results.table(), HasSubstr("other failed"));
    EXPECT_THAT(results.json(), Not(HasSubstr("other <1>")));
    EXPECT_THAT(results.json(), HasSubstr("other failed"));
}

TEST(Results, JsonHoldsEveryValueAndTheStatistics) {
    const auto json = nlohmann::json::parse(twoPrograms().json());
    EXPECT_EQ(json["benchmark"], "start");
    ASSERT_EQ(json["results"].size(), 3U);
    const auto& other = json["results"][1];
    EXPECT_EQ(other["values"], nlohmann::json({50, 400, 600}));
    EXPECT_EQ(other["median"], 400);
    EXPECT_EQ(other["unit"], "ms");
    EXPECT_EQ(other["ratio"]["lowest"], 0.5);
    EXPECT_FALSE(json["results"][0].contains("ratio"));
}

TEST(Results, FilesAreNamedAfterTheBenchmark) {
    const test::TemporaryFolder folder;
    testing::internal::CaptureStdout();
    twoPrograms().publish(folder.path() / "bench");
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(fileText(folder.path() / "bench" / "start.json"), twoPrograms().json());
    EXPECT_EQ(fileText(folder.path() / "bench" / "start.svg"), twoPrograms().picture());
}

TEST(Results, TheyLieBesideThePresetsFolder) {
    EXPECT_EQ(resultFolder("/a/build/release"), "/a/build/bench");
}

TEST(BarChart, TextsOfOthersAreNoMarkup) {
    const std::string picture = twoPrograms().picture();
    EXPECT_THAT(picture, HasSubstr("other &lt;1&gt;"));
    EXPECT_THAT(picture, Not(HasSubstr("<1>")));
    EXPECT_EQ(xmlText("a&b\"c"), "a&amp;b&quot;c");
}

TEST(BarChart, LengthsAreInProportionWithinAGroup) {
    BarChart chart;
    chart.add("first", {{"a", 10, 10, 10}, {"b", 5, 1, 7}});
    chart.add("second", {{"c", 0.5, 0.5, 1}});
    const std::string picture = chart.svg();
    EXPECT_THAT(picture, HasSubstr("width=\"520.0\" height=\"14.0\""));
    EXPECT_THAT(picture, ContainsRegex("width=\"260.0\".*\n.*\n.*>5</text>"));
    EXPECT_THAT(picture, ContainsRegex("width=\"260.0\".*\n.*\n.*>0.5</text>"));
}

TEST(BarChart, OnlyZerosMakeAPictureToo) {
    BarChart chart;
    chart.add("nothing", {{"a", 0, 0, 0}});
    EXPECT_THAT(chart.svg(), Not(HasSubstr("nan")));
    EXPECT_THAT(chart.svg(), HasSubstr("width=\"0.0\""));
}

} // namespace
} // namespace kelo::bench
