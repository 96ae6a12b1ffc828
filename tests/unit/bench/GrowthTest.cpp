#include "common/Growth.h"
#include "common/Distribution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace kelo::bench {
namespace {

TEST(Growth, ThePowerOfTheSizeIsFound) {
    for (const double exponent : {0.0, 0.5, 1.0, 2.0}) {
        std::vector<SizeAndCost> points;
        for (const double size : {10.0, 100.0, 500.0, 2000.0, 50000.0})
            points.push_back({size, 3 * std::pow(size, exponent)});
        EXPECT_NEAR(growthExponent(points), exponent, 1e-9);
    }
}

TEST(Growth, EveryPointCounts) {
    const std::vector<SizeAndCost> points{{1, 1}, {10, 10}, {100, 1000}};
    EXPECT_NEAR(growthExponent(points), 1.5, 1e-9);
}

TEST(Distribution, AMedianLiesBetweenTheMiddleTwoOfAnEvenNumber) {
    EXPECT_DOUBLE_EQ(distributionOf({4, 1, 3, 2}).median, 2.5);
    EXPECT_DOUBLE_EQ(distributionOf({3, 1, 2}).median, 2);
    EXPECT_DOUBLE_EQ(distributionOf({7}).percentile95, 7);
}

TEST(Distribution, The95thPercentileIsNotExceededByNineteenOfTwenty) {
    std::vector<double> values;
    for (int value = 1; value <= 20; ++value)
        values.push_back(value);
    const auto found = distributionOf(values);
    EXPECT_DOUBLE_EQ(found.percentile95, 19);
    EXPECT_DOUBLE_EQ(found.lowest, 1);
    EXPECT_DOUBLE_EQ(found.highest, 20);
    EXPECT_EQ(found.count, 20U);
}

TEST(Ratio, IsTakenRoundByRound) {
    // The medians' quotient would be 20.
    const auto ratio = ratioOf({10, 20, 60}, {1, 2, 3});
    ASSERT_TRUE(ratio);
    EXPECT_DOUBLE_EQ(ratio->median, 10);
    EXPECT_DOUBLE_EQ(ratio->lowest, 10);
    EXPECT_DOUBLE_EQ(ratio->highest, 20);
}

TEST(Ratio, RoundsThatDoNotBelongTogetherHaveNone) {
    EXPECT_FALSE(ratioOf({1, 2}, {1}));
    EXPECT_FALSE(ratioOf({}, {}));
    EXPECT_FALSE(ratioOf({1, 2}, {1, 0}));
}

} // namespace
} // namespace kelo::bench
