#include "base/Base64URL.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

TEST(Base64URL, EncodesWithTheUrlAlphabetAndWithoutPadding) {
    EXPECT_EQ(base64URLEncode(Bytes{0xFB, 0xFF}), "-_8");
    EXPECT_EQ(base64URLEncode(Bytes{}), "");
    EXPECT_EQ(base64URLEncode(Bytes{0x61}), "YQ");
    EXPECT_EQ(base64URLEncode(Bytes{0, 0, 0}), "AAAA");
}

TEST(Base64URL, DecodesWithMissingPaddingRestored) {
    EXPECT_EQ(base64URLDecode("-_8"), (Bytes{0xFB, 0xFF}));
    EXPECT_EQ(base64URLDecode("YQ"), Bytes{0x61});
    EXPECT_EQ(base64URLDecode(""), Bytes{});
}

TEST(Base64URL, DecodesStandardBase64Too) {
    EXPECT_EQ(base64URLDecode("+/8="), (Bytes{0xFB, 0xFF}));
    EXPECT_EQ(base64URLDecode("+_8"), (Bytes{0xFB, 0xFF}));
}

TEST(Base64URL, PaddingThatIsThereIsKeptAndFilledUp) {
    EXPECT_EQ(base64URLDecode("YQ=="), Bytes{0x61});
    EXPECT_EQ(base64URLDecode("YQ="), Bytes{0x61});
    EXPECT_EQ(base64URLDecode("YWI="), (Bytes{0x61, 0x62}));
}

TEST(Base64URL, WhatIsNotBase64DecodesToNothing) {
    for (const char* text : {"Y Q", " YQ", "YQ\n", "Y", "AAAAA", "====", "YWJj=", "YWI==", "YQ===",
                             "Y=Q=", "YQ==YQ==", "Y*==", "\xC3\xA9"})
        EXPECT_FALSE(base64URLDecode(text)) << text;
}

TEST(Base64URL, BitsThatTheLastDigitHasTooManyAreIgnored) {
    EXPECT_EQ(base64URLDecode("YR"), Bytes{0x61});
    EXPECT_EQ(base64URLDecode("YR=="), Bytes{0x61});
    EXPECT_EQ(base64URLDecode("-__"), (Bytes{0xFB, 0xFF}));
    EXPECT_EQ(base64URLDecode("//9="), (Bytes{0xFF, 0xFF}));
}

TEST(Base64URL, EveryByteAndLengthSurvivesTheWayThereAndBack) {
    Bytes bytes;
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(base64URLDecode(base64URLEncode(bytes)), bytes) << i;
        bytes.push_back(static_cast<std::uint8_t>(i * 7));
    }
}

} // namespace
} // namespace kelo
