#include "web/UserScript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace kelo {
namespace {

TEST(UserScript, HasItsExactLengthAndLines) {
    const std::string_view script = web::hidePasskeyButtonsScript;
    EXPECT_EQ(script.size(), 452u);
    const auto continuationBytes = std::count_if(script.begin(), script.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
    });
    EXPECT_EQ(script.size() - static_cast<std::size_t>(continuationBytes), 450u);
    EXPECT_EQ(std::count(script.begin(), script.end(), '\n'), 12);
    EXPECT_FALSE(script.ends_with('\n'));
    EXPECT_EQ(script.find('\r'), std::string_view::npos);
}

TEST(UserScript, LooksForTheLabelsOfTheNativeButton) {
    for (const std::string_view label : {web::signInLabel, web::waitingLabel})
        EXPECT_NE(web::hidePasskeyButtonsScript.find("t==='" + std::string(label) + "'"),
                  std::string_view::npos);
}

// A wrong letter does not show in a page: the script's other two looks hide what this one misses.
TEST(UserScript, LooksAtOnceAtEachChangeAndWhenTheDocumentIsComplete) {
    const auto has = [](std::string_view line) {
        return web::hidePasskeyButtonsScript.find("\n" + std::string(line) + "\n") !=
               std::string_view::npos;
    };
    EXPECT_TRUE(has("  hide();"));
    EXPECT_TRUE(has("  try{ new MutationObserver(hide).observe(document.documentElement,"
                    "{childList:true,subtree:true}); }catch(e){}"));
    EXPECT_TRUE(has("  document.addEventListener('DOMContentLoaded',hide);"));
}

} // namespace
} // namespace kelo
