#include "base/Utf8.h"

#include <gtest/gtest.h>

namespace kelo::platform {
namespace {

TEST(Utf8, WellFormedTextsAreAccepted) {
    for (const char* text :
         {"", "plain", "\u00e9", "\u2014", "\U0001F511", "\uD7FF", "\uE000", "\U0010FFFF"})
        EXPECT_TRUE(isWellFormedUtf8(text)) << text;
}

TEST(Utf8, IllFormedTextsAreRefused) {
    for (const char* text : {"\x80", "\xC0\x80", "\xC3", "\xE2\x80", "\xE0\x9F\x80", "\xED\xA0\x80",
                             "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "a\xFF"})
        EXPECT_FALSE(isWellFormedUtf8(text)) << text;
}

} // namespace
} // namespace kelo::platform
