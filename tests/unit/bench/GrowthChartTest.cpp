#include "common/GrowthChart.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace kelo::bench {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

const GrowthSeries linear{"store & find", "records", {{10, 1}, {100, 10}, {1000, 100}}};
const GrowthSeries quadratic{"sort", "items", {{1, 1}, {10, 100}}};

TEST(GrowthChart, TheTableJudgesTheExponent) {
    const std::string table = growthTable({linear, quadratic});
    EXPECT_THAT(table, ContainsRegex("records +10 +100 +1000\n"));
    EXPECT_THAT(table, ContainsRegex("ms +1 +10 +100   size\\^1.00: not worse than linear\n"));
    EXPECT_THAT(table, ContainsRegex("ms +1 +100   size\\^2.00: WORSE THAN LINEAR\n"));
}

TEST(GrowthChart, TheLimitItselfIsStillLinear) {
    const GrowthSeries nearly{"a", "b", {{1, 1}, {10, 14.1}}};
    const GrowthSeries beyond{"a", "b", {{1, 1}, {10, 14.2}}};
    EXPECT_THAT(growthTable({nearly}), HasSubstr("not worse"));
    EXPECT_THAT(growthTable({beyond}), HasSubstr("WORSE"));
}

TEST(GrowthChart, JsonHoldsPointsExponentAndVerdict) {
    const auto json = nlohmann::json::parse(growthJson({linear, quadratic}, {"a note"}));
    EXPECT_EQ(json["notes"][0], "a note");
    EXPECT_EQ(json["results"][0]["points"][2]["milliseconds"], 100);
    EXPECT_EQ(json["results"][0]["notWorseThanLinear"], true);
    EXPECT_EQ(json["results"][1]["notWorseThanLinear"], false);
    EXPECT_NEAR(json["results"][1]["exponent"].get<double>(), 2, 1e-9);
}

TEST(GrowthChart, LinearGrowthIsTheDiagonal) {
    const std::string picture = growthPicture({linear});
    EXPECT_THAT(picture, HasSubstr("points=\"60.0,500.0 300.0,260.0 540.0,20.0 \""));
    EXPECT_THAT(picture, HasSubstr("store &amp; find"));
}

TEST(GrowthChart, TheScaleReachesAsFarAsTheLargestPoint) {
    // Two decades up, one across.
    EXPECT_THAT(growthPicture({quadratic}), HasSubstr("points=\"60.0,500.0 300.0,20.0 \""));
}

} // namespace
} // namespace kelo::bench
