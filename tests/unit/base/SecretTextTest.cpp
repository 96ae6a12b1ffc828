#include "base/SecretText.h"

#include <gtest/gtest.h>

#include <utility>

namespace kelo::platform {
namespace {

TEST(SecretText, MovedFromIsEmpty) {
    SecretText first("analytical engine");
    SecretText second(std::move(first));
    EXPECT_TRUE(first.empty()); // NOLINT(bugprone-use-after-move): that is the rule
    EXPECT_EQ(second.view(), "analytical engine");
    SecretText third;
    third = std::move(second);
    EXPECT_TRUE(second.empty()); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(third.view(), "analytical engine");
}

TEST(SecretText, WipeOverwritesTheWholeBuffer) {
    std::string text = "a password that is too long for the small buffer";
    const char* memory = text.data();
    const std::size_t size = text.size();
    text.resize(4);
    wipe(text);
    EXPECT_TRUE(text.empty());
    ASSERT_EQ(text.data(), memory);
    for (std::size_t i = 0; i < size && i < text.capacity(); ++i)
        EXPECT_EQ(memory[i], '\0') << i;
}

} // namespace
} // namespace kelo::platform
