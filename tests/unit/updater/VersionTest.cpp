#include "updater/appcast/Version.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelo::test {

using updater::compareVersions;

namespace {

struct Row {
    std::string older;
    std::string newer;
};

std::string nameOf(const testing::TestParamInfo<Row>& row) {
    // The number keeps names unique that differ in punctuation only.
    std::string name =
        row.param.older + "_and_" + row.param.newer + "_" + std::to_string(row.index);
    for (char& c : name)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')))
            c = '_';
    return name;
}

class OlderThan : public testing::TestWithParam<Row> {};
class EqualTo : public testing::TestWithParam<Row> {};

} // namespace

TEST_P(OlderThan, BothWaysRound) {
    const auto& [older, newer] = GetParam();
    EXPECT_TRUE(compareVersions(older, newer) < 0) << older << " < " << newer;
    EXPECT_TRUE(compareVersions(newer, older) > 0) << newer << " > " << older;
}

INSTANTIATE_TEST_SUITE_P(
    Version, OlderThan,
    testing::Values(Row{"1.0", "1.1"}, Row{"0.1", "0.1.2"}, Row{"1.5.5", "1.5.6a1"},
                    Row{"1.0a1", "1.0b1"}, Row{"1.0b1", "1.0"}, Row{"1.0a1", "1.0"},
                    Row{"1.0b9", "1.0b10"}, Row{"1.0rc", "1.0"}, Row{"1.0 (1234)", "1.0 (1235)"},
                    Row{"1.0b1 (1234)", "1.0 (1234)"}, Row{"3.3 (5847)", "3.3.1b1 (5902)"},
                    Row{"2.0.0.2429", "2.0.0.2430"}, Row{"201210251627", "201211051041"},
                    Row{"9", "10"}, Row{"1.09", "1.10"},
                    // Larger than any integer type.
                    Row{"99999999999999999999999", "100000000000000000000000"},
                    Row{"18446744073709551615", "18446744073709551616"}, Row{"abc", "1.0"},
                    Row{"abc", ""}, Row{"", "1"}, Row{"1.0.a", "1.0.1"}),
    nameOf);

TEST_P(EqualTo, BothWaysRound) {
    const auto& [left, right] = GetParam();
    EXPECT_TRUE(compareVersions(left, right) == 0) << left << " = " << right;
    EXPECT_TRUE(compareVersions(right, left) == 0) << right << " = " << left;
}

INSTANTIATE_TEST_SUITE_P(Version, EqualTo,
                         testing::Values(Row{"1.0", "1.0.0"}, Row{"1", "1.0.0.0"},
                                         Row{"1.5.5-335d3e2", "1.5.5-a655360"},
                                         Row{"1.0pre1", "1.0.0pre1"},
                                         Row{"3.3 (5847)", "3.3.0 (5847)"}, Row{"1.01", "1.1"},
                                         Row{"1.", "1.0"}, Row{"", ""}, Row{"", "-5"},
                                         Row{"1.0+5", "1.0_5"}),
                         nameOf);

TEST(Version, OrderIsTheSameByWhateverWay) {
    const std::vector<std::string> rising = {"1.0a1",   "1.0b1",   "1.0rc",   "1.0",
                                             "1.0 (1)", "1.0 (2)", "1.0.1b2", "1.0.1",
                                             "1.1",     "2",       "2.0.0.1", "10"};
    for (std::size_t i = 0; i < rising.size(); ++i)
        for (std::size_t j = 0; j < rising.size(); ++j)
            EXPECT_TRUE(compareVersions(rising[i], rising[j]) == (i <=> j))
                << rising[i] << " and " << rising[j];
}

} // namespace kelo::test
