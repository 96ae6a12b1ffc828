#include "base/Base64.h"

#include <gtest/gtest.h>

#include <utility>

namespace kelo {
namespace {

Bytes bytesUpTo(int count) {
    Bytes bytes;
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(i * 7));
    return bytes;
}

TEST(Base64, KnownTextsAreWrittenAndRead) {
    const std::pair<const char*, const char*> known[] = {{"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},
                                                         {"foob", "Zm9vYg=="},
                                                         {"fooba", "Zm9vYmE="},
                                                         {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, text] : known) {
        EXPECT_EQ(base64Encode(bytesOf(plain)), text);
        EXPECT_EQ(base64Decode(text), bytesOf(plain)) << text;
    }
    EXPECT_EQ(base64Encode(Bytes{0xFB, 0xFF, 0xBF}), "+/+/");
    EXPECT_EQ(base64Decode("+/+/"), (Bytes{0xFB, 0xFF, 0xBF}));
}

TEST(Base64, WhatNoEncoderWritesIsRefused) {
    for (const char* text : {"Zg", "Zg=", "Z===", "====", "=", "Zg==Zg==", "Zh==", "Zm9=", "Zm 9v",
                             "Zm9v\nZm9v", " Zm9", "Zm-v", "Zm_v", "Zg===", "Zg=v", "Zm9vZ==="})
        EXPECT_FALSE(base64Decode(text)) << text;
}

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
                             "YQ=Q", "Y=Q=", "YQ==YQ==", "Y*==", "\xC3\xA9"})
        EXPECT_FALSE(base64URLDecode(text)) << text;
}

TEST(Base64URL, BitsThatTheLastDigitHasTooManyAreIgnored) {
    EXPECT_EQ(base64URLDecode("YR"), Bytes{0x61});
    EXPECT_EQ(base64URLDecode("YR=="), Bytes{0x61});
    EXPECT_EQ(base64URLDecode("-__"), (Bytes{0xFB, 0xFF}));
    EXPECT_EQ(base64URLDecode("//9="), (Bytes{0xFF, 0xFF}));
}

TEST(Base64URL, StrictDecodingHasOneSpellingForEveryValue) {
    EXPECT_EQ(base64URLDecodeStrict("-_8"), (Bytes{0xFB, 0xFF}));
    EXPECT_EQ(base64URLDecodeStrict("YQ"), Bytes{0x61});
    EXPECT_EQ(base64URLDecodeStrict(""), Bytes{});
    for (const char* text : {"-_8=", "+/8", "-_9", "YR", "A", "AAAAA", "A A", "-_8\n", "=", "YQ=="})
        EXPECT_EQ(base64URLDecodeStrict(text), std::nullopt) << text;
}

TEST(Base64, EveryByteAndLengthIsReadAsItWasWritten) {
    for (int count = 0; count < 300; ++count) {
        const Bytes bytes = bytesUpTo(count);
        EXPECT_EQ(base64Decode(base64Encode(bytes)), bytes) << count;
        EXPECT_EQ(base64URLDecode(base64URLEncode(bytes)), bytes) << count;
        EXPECT_EQ(base64URLDecode(base64Encode(bytes)), bytes) << count;
        EXPECT_EQ(base64URLDecodeStrict(base64URLEncode(bytes)), bytes) << count;
    }
}

} // namespace
} // namespace kelo
