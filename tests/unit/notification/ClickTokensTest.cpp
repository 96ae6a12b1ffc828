#include "linux/notification/ClickTokens.h"

#include "fakes/FakeMainLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace kelo::notification {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ClickTokensTest : public testing::Test {
protected:
    fakes::FakeMainLoop loop;
    const MainLoop::Installation installation{loop};
    std::vector<std::string> kept;
    std::vector<std::string> dropped;
    std::unique_ptr<ClickTokens> tokens = std::make_unique<ClickTokens>(
        ClickTokens::Handlers{[this](const std::string& token) { kept.push_back(token); },
                              [this](const std::string& token) { dropped.push_back(token); }});
};

TEST_F(ClickTokensTest, TokenIsKeptUntilItsClickIsHandled) {
    tokens->tokenSent(7, "one");
    loop.runUntilIdle();
    EXPECT_THAT(kept, ElementsAre("one"));
    tokens->clicked(7);
    // Others may hear of the click later than this object.
    EXPECT_THAT(dropped, IsEmpty());
    loop.runUntilIdle();
    EXPECT_THAT(dropped, ElementsAre("one"));
}

TEST_F(ClickTokensTest, ClickOnAnotherNotificationDropsNothing) {
    tokens->tokenSent(7, "one");
    tokens->clicked(8);
    loop.runUntilIdle();
    EXPECT_THAT(dropped, IsEmpty());
    tokens->clicked(7);
    loop.runUntilIdle();
    EXPECT_THAT(dropped, ElementsAre("one"));
}

TEST_F(ClickTokensTest, ClickWithoutATokenDropsNothing) {
    tokens->clicked(7);
    tokens->tokenSent(7, "one");
    tokens->clicked(7);
    tokens->clicked(7);
    loop.runUntilIdle();
    EXPECT_THAT(dropped, ElementsAre("one"));
}

TEST_F(ClickTokensTest, NextTokenIsNotDroppedWithTheLast) {
    tokens->tokenSent(7, "one");
    tokens->clicked(7);
    tokens->tokenSent(8, "two");
    loop.runUntilIdle();
    EXPECT_THAT(kept, ElementsAre("one", "two"));
    EXPECT_THAT(dropped, ElementsAre("one"));
}

TEST_F(ClickTokensTest, NothingIsDroppedAfterTheEnd) {
    tokens->tokenSent(7, "one");
    tokens->clicked(7);
    tokens.reset();
    loop.runUntilIdle();
    EXPECT_THAT(dropped, IsEmpty());
}

} // namespace
} // namespace kelo::notification
