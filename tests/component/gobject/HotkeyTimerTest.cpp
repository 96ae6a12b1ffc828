#include "component/gobject/LoopClock.h"
#include "voice/GlobalHotkey.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace kelo::test {

namespace {

using namespace std::chrono_literals;
using Actions = std::vector<std::string>;

constexpr platform::ModifierFlags chord = platform::modifier::control | platform::modifier::option;

/// The hotkey with the timer that it has in the program.
class HotkeyTimerTest : public testing::Test {
protected:
    HotkeyTimerTest() {
        hotkey->onTap = [this] { note("tap"); };
        hotkey->onHoldStart = [this] { note("hold start"); };
        hotkey->onHoldEnd = [this] { note("hold end"); };
    }
    void note(const std::string& action) {
        actions.push_back(action);
        last = loopTime();
    }

    TestMainLoop loop;
    std::shared_ptr<voice::GlobalHotkey> hotkey = std::make_shared<voice::GlobalHotkey>();
    Actions actions;
    std::chrono::microseconds last{};
};

TEST_F(HotkeyTimerTest, HoldStartsAQuarterOfASecondAfterThePressAndOnce) {
    const auto begin = loopTime();
    hotkey->handleFlagsChanged(chord);
    const auto planned = plannedSleep();
    EXPECT_LE(planned, 250ms);
    EXPECT_GE(planned, 0ms) << "a timer is under way";
    ASSERT_TRUE(loop.runUntil([this] { return !actions.empty(); }));
    EXPECT_EQ(actions, Actions{"hold start"});
    EXPECT_GE(last - begin, 250ms);
    EXPECT_EQ(plannedSleep(), -1ms) << "it fires once";
    hotkey->handleFlagsChanged(0);
    EXPECT_EQ(actions, (Actions{"hold start", "hold end"}));
}

TEST_F(HotkeyTimerTest, ATapLeavesNoTimerBehind) {
    hotkey->handleFlagsChanged(chord);
    hotkey->handleFlagsChanged(0);
    EXPECT_EQ(actions, Actions{"tap"});
    EXPECT_EQ(plannedSleep(), -1ms);
}

TEST_F(HotkeyTimerTest, ASecondPressHasTheWholeThresholdAgain) {
    hotkey->handleFlagsChanged(chord);
    hotkey->handleFlagsChanged(0);
    actions.clear();
    const auto begin = loopTime();
    hotkey->handleFlagsChanged(chord);
    ASSERT_TRUE(loop.runUntil([this] { return !actions.empty(); }));
    EXPECT_EQ(actions, Actions{"hold start"});
    EXPECT_GE(last - begin, 250ms);
}

TEST_F(HotkeyTimerTest, TimerOutlivesTheHotkeyAndDoesNothing) {
    hotkey->handleFlagsChanged(chord);
    hotkey.reset();
    EXPECT_GE(plannedSleep(), 0ms) << "it is still under way";
    ASSERT_TRUE(passOn(loop, 260ms));
    EXPECT_EQ(plannedSleep(), -1ms);
    EXPECT_EQ(actions, Actions{});
}

} // namespace

} // namespace kelo::test
