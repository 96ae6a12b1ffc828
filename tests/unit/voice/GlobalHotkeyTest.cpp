#include "voice/GlobalHotkey.h"

#include "fakes/ScopedTestDesktop.h"
#include "log/DebugLog.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

using namespace std::chrono_literals;
using Actions = std::vector<std::string>;
namespace modifier = platform::modifier;

constexpr platform::ModifierFlags chord = modifier::control | modifier::option;

struct GlobalHotkeyTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    fakes::FakeEventMonitors& monitors = desktop.monitors;
    std::shared_ptr<voice::GlobalHotkey> hotkey = std::make_shared<voice::GlobalHotkey>();
    Actions actions;

    GlobalHotkeyTest() {
        hotkey->onTap = [this] { actions.emplace_back("tap"); };
        hotkey->onHoldStart = [this] { actions.emplace_back("hold start"); };
        hotkey->onHoldEnd = [this] { actions.emplace_back("hold end"); };
    }
    std::string log() { return desktop.fileSystem().files[std::string(log::debugLogPath)]; }
    void flags(platform::ModifierFlags flags) const { hotkey->handleFlagsChanged(flags); }
    void wait(std::chrono::duration<double> span) { desktop.loop.advance(span); }
};

TEST_F(GlobalHotkeyTest, ReleaseWithinTheThresholdIsOneTapAndNoHold) {
    flags(chord);
    wait(249ms);
    flags(0);
    wait(10s);
    EXPECT_EQ(actions, Actions{"tap"});
}

TEST_F(GlobalHotkeyTest, HoldStartsAtTheThresholdAndEndsAtTheRelease) {
    flags(chord);
    wait(249ms);
    EXPECT_TRUE(actions.empty());
    wait(1ms);
    EXPECT_EQ(actions, Actions{"hold start"});
    wait(10s);
    EXPECT_EQ(actions, Actions{"hold start"});
    flags(0);
    EXPECT_EQ(actions, (Actions{"hold start", "hold end"}));
}

TEST_F(GlobalHotkeyTest, AnotherModifierDuringThePressKeepsTheFirstDeadline) {
    flags(chord);
    wait(200ms);
    flags(chord | modifier::shift);
    flags(chord | modifier::shift | modifier::command);
    flags(chord);
    EXPECT_EQ(desktop.loop.pendingTimers(), 1u);
    wait(50ms);
    EXPECT_EQ(actions, Actions{"hold start"});
}

TEST_F(GlobalHotkeyTest, ChordCountsTogetherWithOtherModifiers) {
    constexpr platform::ModifierFlags others = modifier::shift | modifier::capsLock | 0x800000;
    flags(chord | others);
    EXPECT_EQ(desktop.loop.pendingTimers(), 1u) << "the press begins while the others are down";
    flags(chord); // only the others were released
    EXPECT_TRUE(actions.empty());
    flags(modifier::control);
    EXPECT_EQ(actions, Actions{"tap"});
}

TEST_F(GlobalHotkeyTest, NoOtherModifierPreventsOrEndsAPress) {
    for (int bit = 0; bit < 64; ++bit) {
        const platform::ModifierFlags other = platform::ModifierFlags{1} << bit;
        if (other & chord)
            continue;
        actions.clear();
        flags(chord | other);
        wait(250ms);
        EXPECT_EQ(actions, Actions{"hold start"}) << bit;
        flags(chord);
        flags(chord | other);
        EXPECT_EQ(actions, Actions{"hold start"}) << bit;
        flags(other);
        EXPECT_EQ(actions, (Actions{"hold start", "hold end"})) << bit;
        flags(0);
    }
}

TEST_F(GlobalHotkeyTest, ReleaseOfEitherKeyEndsThePress) {
    for (const auto left : {modifier::control, modifier::option}) {
        actions.clear();
        flags(chord);
        flags(left);
        EXPECT_EQ(actions, Actions{"tap"});
        flags(0);
        EXPECT_EQ(actions, Actions{"tap"});
    }
}

TEST_F(GlobalHotkeyTest, OneKeyOfTheChordAloneIsNothing) {
    for (const auto alone : {modifier::control, modifier::option, modifier::shift}) {
        flags(alone);
        EXPECT_EQ(desktop.loop.pendingTimers(), 0u);
        wait(1s);
        flags(0);
    }
    EXPECT_TRUE(actions.empty());
}

TEST_F(GlobalHotkeyTest, PressAfterAHoldIsATapAgain) {
    flags(chord);
    wait(1s);
    flags(0);
    flags(chord);
    wait(100ms);
    flags(0);
    EXPECT_EQ(actions, (Actions{"hold start", "hold end", "tap"}));
}

TEST_F(GlobalHotkeyTest, ReleaseCancelsTheTimer) {
    flags(chord);
    EXPECT_EQ(desktop.loop.pendingTimers(), 1u);
    flags(0);
    EXPECT_EQ(desktop.loop.pendingTimers(), 0u);
}

TEST_F(GlobalHotkeyTest, EachPressHasAThresholdOfItsOwn) {
    flags(chord);
    wait(200ms);
    flags(0);
    flags(chord);
    wait(200ms);
    EXPECT_EQ(actions, Actions{"tap"});
    wait(50ms);
    EXPECT_EQ(actions, (Actions{"tap", "hold start"}));
}

TEST_F(GlobalHotkeyTest, TimerThatFiresAfterAReleaseDoesNothing) {
    flags(chord);
    flags(0);
    hotkey->holdTimerFired();
    EXPECT_EQ(actions, Actions{"tap"});
}

TEST_F(GlobalHotkeyTest, HotkeyIsReadyForTheNextPressWhenAnActionRuns) {
    hotkey->onTap = [this] {
        actions.emplace_back("tap");
        if (actions.size() == 1)
            flags(chord);
    };
    flags(chord);
    flags(0);
    flags(0);
    EXPECT_EQ(actions, (Actions{"tap", "tap"}));
}

TEST_F(GlobalHotkeyTest, ReleaseDuringHoldStartEndsAHold) {
    hotkey->onHoldStart = [this] {
        actions.emplace_back("hold start");
        flags(0);
    };
    flags(chord);
    wait(250ms);
    EXPECT_EQ(actions, (Actions{"hold start", "hold end"}));
}

TEST_F(GlobalHotkeyTest, ActionMayReplaceItselfWhileItRuns) {
    // Replaces the action by an empty one, and looks whether what the running one holds is still
    // there.
    const auto replacing = [this](voice::GlobalHotkey::Action& action) {
        return [this, &action, held = std::make_shared<int>()] {
            const std::weak_ptr<int> watched = held;
            auto& seen = actions;
            action = [] {};
            seen.emplace_back(watched.expired() ? "gone" : "held");
        };
    };
    for (auto* const action : {&hotkey->onTap, &hotkey->onHoldStart, &hotkey->onHoldEnd}) {
        *action = replacing(*action);
        flags(chord);
        if (action != &hotkey->onTap)
            wait(1s);
        flags(0);
    }
    EXPECT_EQ(actions, (Actions{"held", "held", "hold end", "held"}));
}

TEST_F(GlobalHotkeyTest, ActionsAreEmptyUnlessSet) {
    hotkey = std::make_shared<voice::GlobalHotkey>();
    flags(chord);
    flags(0);
    flags(chord);
    wait(1s);
    flags(0);
    EXPECT_EQ(desktop.loop.pendingTimers(), 0u);
}

TEST_F(GlobalHotkeyTest, WatchesModifiersAndThatAnotherKeyWasPressedAndNothingElse) {
    constexpr platform::EventMask watched = 0x1000 | platform::event_mask::otherPress;
    hotkey->start();
    ASSERT_EQ(monitors.globals.size(), 1u);
    ASSERT_EQ(monitors.locals.size(), 1u);
    EXPECT_EQ(monitors.globals[0].first, watched);
    EXPECT_EQ(monitors.locals[0].first, watched);
}

TEST_F(GlobalHotkeyTest, AnotherPressWithinTheThresholdLeavesNoTap) {
    flags(chord);
    wait(100ms);
    hotkey->handleOtherPress();
    EXPECT_EQ(desktop.loop.pendingTimers(), 0u);
    flags(0);
    wait(10s);
    EXPECT_TRUE(actions.empty());
}

TEST_F(GlobalHotkeyTest, AnotherPressWithinTheThresholdLeavesNoHold) {
    flags(chord);
    wait(249ms);
    hotkey->handleOtherPress();
    wait(10s);
    flags(0);
    EXPECT_TRUE(actions.empty());
}

TEST_F(GlobalHotkeyTest, TimerThatFiresAfterAnotherPressDoesNothing) {
    flags(chord);
    hotkey->handleOtherPress();
    hotkey->holdTimerFired();
    flags(0);
    EXPECT_TRUE(actions.empty());
}

TEST_F(GlobalHotkeyTest, APressStaysDroppedUntilTheChordIsReleased) {
    flags(chord);
    hotkey->handleOtherPress();
    flags(chord | modifier::shift);
    flags(chord);
    hotkey->handleOtherPress();
    EXPECT_EQ(desktop.loop.pendingTimers(), 0u);
    flags(modifier::control);
    EXPECT_TRUE(actions.empty());
}

TEST_F(GlobalHotkeyTest, AfterADroppedPressTheNextOneCounts) {
    flags(chord);
    hotkey->handleOtherPress();
    flags(modifier::control); // one key of the chord stays down
    flags(chord);
    flags(0);
    EXPECT_EQ(actions, Actions{"tap"});
    flags(chord);
    hotkey->handleOtherPress();
    flags(0);
    flags(chord);
    wait(250ms);
    flags(0);
    EXPECT_EQ(actions, (Actions{"tap", "hold start", "hold end"}));
}

TEST_F(GlobalHotkeyTest, AHoldThatHasBegunEndsAsUsualAfterAnotherPress) {
    flags(chord);
    wait(250ms);
    hotkey->handleOtherPress();
    EXPECT_EQ(actions, Actions{"hold start"});
    flags(0);
    EXPECT_EQ(actions, (Actions{"hold start", "hold end"}));
}

TEST_F(GlobalHotkeyTest, AnotherPressBeforeTheChordOrAfterItDoesNotCount) {
    hotkey->handleOtherPress();
    flags(modifier::control);
    hotkey->handleOtherPress();
    flags(chord);
    flags(0);
    EXPECT_EQ(actions, Actions{"tap"});
    hotkey->handleOtherPress();
    flags(chord);
    flags(0);
    EXPECT_EQ(actions, (Actions{"tap", "tap"}));
}

TEST_F(GlobalHotkeyTest, AnotherPressCountsHereAndElsewhereAndIsPassedOn) {
    hotkey->start();
    monitors.flagsElsewhere(chord);
    monitors.otherPressElsewhere();
    monitors.flagsElsewhere(0);
    monitors.flagsHere(chord);
    EXPECT_NE(monitors.otherPressHere(), nullptr);
    monitors.flagsHere(0);
    monitors.flagsElsewhere(chord); // the shortcut brings a window of ours up
    monitors.otherPressElsewhere();
    monitors.flagsHere(0);
    EXPECT_TRUE(actions.empty());
    monitors.flagsHere(chord);
    monitors.flagsHere(0);
    EXPECT_EQ(actions, Actions{"tap"});
}

TEST_F(GlobalHotkeyTest, WorksWhileAnotherProgramHasTheFocusAndWhileWeHave) {
    hotkey->start();
    monitors.flagsElsewhere(chord);
    monitors.flagsElsewhere(0);
    monitors.flagsHere(chord);
    monitors.flagsHere(0);
    monitors.flagsElsewhere(chord); // the focus changes hands during a press
    monitors.flagsHere(0);
    EXPECT_EQ(actions, (Actions{"tap", "tap", "tap"}));
}

TEST_F(GlobalHotkeyTest, LocalMonitorReturnsTheVeryEventItReceived) {
    hotkey->start();
    const auto& handler = monitors.locals.at(0).second;
    for (const platform::ModifierFlags flags : {chord, platform::ModifierFlags{0}}) {
        const auto event = std::make_shared<const platform::Event>(
            platform::Event{platform::event_mask::flagsChanged, flags});
        EXPECT_EQ(handler(event), event);
    }
    hotkey.reset();
    const auto event = std::make_shared<const platform::Event>();
    EXPECT_EQ(handler(event), event);
}

TEST_F(GlobalHotkeyTest, SecondStartAddsMonitorsAndChangesNoOutcome) {
    hotkey->start();
    hotkey->start();
    EXPECT_EQ(monitors.globals.size(), 2u);
    EXPECT_EQ(monitors.locals.size(), 2u);
    monitors.flagsElsewhere(chord);
    monitors.flagsElsewhere(0);
    monitors.flagsHere(chord);
    EXPECT_EQ(desktop.loop.pendingTimers(), 1u);
    wait(1s);
    monitors.flagsHere(0);
    EXPECT_EQ(actions, (Actions{"tap", "hold start", "hold end"}));
}

TEST_F(GlobalHotkeyTest, AThousandStartsChangeNoOutcome) {
    for (int count = 0; count < 1000; ++count)
        hotkey->start();
    monitors.flagsElsewhere(chord);
    monitors.flagsElsewhere(0);
    EXPECT_EQ(actions, Actions{"tap"});
    EXPECT_EQ(desktop.loop.pendingTimers(), 0u);
}

TEST_F(GlobalHotkeyTest, LogSaysWhichMonitorsThereAre) {
    hotkey->start();
    EXPECT_NE(log().find("] hotkey.start global=true local=true\n"), std::string::npos);
    monitors.offersGlobal = false;
    hotkey->start();
    EXPECT_NE(log().find("] hotkey.start global=false local=true\n"), std::string::npos);
    monitors.offersLocal = false;
    hotkey->start();
    EXPECT_NE(log().find("] hotkey.start global=false local=false\n"), std::string::npos);
    monitors.offersGlobal = true;
    hotkey->start();
    EXPECT_NE(log().find("] hotkey.start global=true local=false\n"), std::string::npos);
}

TEST_F(GlobalHotkeyTest, WithoutGlobalMonitorTheChordWorksInOurOwnWindows) {
    monitors.offersGlobal = false;
    hotkey->start();
    monitors.flagsHere(chord);
    monitors.flagsHere(0);
    EXPECT_EQ(actions, Actions{"tap"});
}

TEST_F(GlobalHotkeyTest, MonitorsOutliveTheHotkeyAndDoNothing) {
    hotkey->start();
    monitors.flagsElsewhere(chord);
    hotkey.reset();
    monitors.flagsElsewhere(0);
    monitors.flagsHere(chord);
    wait(1s);
    EXPECT_TRUE(actions.empty());
    EXPECT_EQ(monitors.globals.size(), 1u);
}

TEST_F(GlobalHotkeyTest, NothingHandedToThePlatformKeepsTheHotkeyAlive) {
    hotkey->start();
    flags(chord);
    const std::weak_ptr<voice::GlobalHotkey> weak = hotkey;
    hotkey.reset();
    EXPECT_TRUE(weak.expired());
}

} // namespace
} // namespace kelo
