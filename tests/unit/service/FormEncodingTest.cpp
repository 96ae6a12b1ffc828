#include "service/FormEncoding.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

TEST(FormEncoding, FieldsKeepTheirOrderAndAreJoinedWithAmpersands) {
    EXPECT_EQ(service::formEncode({{"b", "2"}, {"a", "1"}, {"b", ""}}), "b=2&a=1&b=");
}

TEST(FormEncoding, JsonKeepsColonsAndCommasAndLosesBracesAndQuotes) {
    EXPECT_EQ(service::formEncode({{"x", R"({"a":"b","c":1})"}}),
              "x=%7B%22a%22:%22b%22,%22c%22:1%7D");
}

TEST(FormEncoding, QueryCharactersStayAsTheyAre) {
    const std::string kept = "AZaz09-._~!$'()*,;:@/?";
    EXPECT_EQ(service::formEncode({{"x", kept}}), "x=" + kept);
}

TEST(FormEncoding, SeparatorsInsideAValueAreEncoded) {
    EXPECT_EQ(service::formEncode({{"x", "a&b=c+d"}}), "x=a%26b%3Dc%2Bd");
}

TEST(FormEncoding, OtherBytesAreEncodedInUpperCase) {
    EXPECT_EQ(service::formEncode({{"x", "\u00e9 |#%[]"}}), "x=%C3%A9%20%7C%23%25%5B%5D");
}

TEST(FormEncoding, NoFieldsGiveNoQuery) {
    EXPECT_EQ(service::formEncode({}), std::nullopt);
}

} // namespace
} // namespace kelo
