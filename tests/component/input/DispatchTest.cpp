#include "component/input/FakeSources.h"
#include "component/input/InputFixture.h"
#include "linux/input/ModifierDispatch.h"

#include <vector>

namespace kelo::tests {

using Changes = std::vector<Seen>;

namespace {

constexpr Flags chord = control | option;

} // namespace

class Dispatch : public testing::Test {
protected:
    FakeFocus focus;
    Changes told;
    input::ModifierDispatch::Receiver receiver = [this](Flags flags, bool ours) {
        told.push_back({!ours, flags});
    };
    /// Where the keyboard was at each other press.
    std::vector<bool> presses;
    input::ModifierDispatch::OtherPressReceiver pressReceiver = [this](bool ours) {
        presses.push_back(ours);
    };
    input::ModifierDispatch one{focus, false, receiver, pressReceiver};
    input::ModifierDispatch two{focus, true, receiver, pressReceiver};
};

TEST_F(Dispatch, OneSourceGoesByTheFocusOfTheMoment) {
    one.sawEverywhere(control);
    focus.ours = true;
    one.sawEverywhere(0);
    EXPECT_EQ(told, (Changes{{true, control}, {false, 0}}));
}

TEST_F(Dispatch, WhatChangesNothingIsNotToldAndAsksForNoFocus) {
    one.sawEverywhere(0);
    one.sawEverywhere(control);
    one.sawEverywhere(control);
    EXPECT_EQ(told, (Changes{{true, control}}));
    EXPECT_EQ(focus.asked, 1);
}

TEST_F(Dispatch, WhatTwoSourcesSeeIsToldOnce) {
    focus.ours = true;
    two.sawEverywhere(control);
    two.sawInOwnWindows(control);
    two.sawInOwnWindows(0);
    two.sawEverywhere(0);
    EXPECT_EQ(told, (Changes{{false, control}, {false, 0}}));
}

TEST_F(Dispatch, InOurWindowsOnlyTheSourceOfOurWindowsCounts) {
    focus.ours = true;
    two.sawEverywhere(control);
    EXPECT_EQ(told, Changes{});
    two.sawInOwnWindows(option);
    EXPECT_EQ(told, (Changes{{false, option}}));
}

TEST_F(Dispatch, ElsewhereTheSourceOfOurWindowsDoesNotCount) {
    two.sawInOwnWindows(option);
    EXPECT_EQ(told, Changes{});
    two.sawEverywhere(control);
    EXPECT_EQ(told, (Changes{{true, control}}));
}

TEST_F(Dispatch, AKeyLetGoOfWhileTheKeyboardComesToUsIsToldWhenItHasCome) {
    two.sawEverywhere(chord);
    two.sawInOwnWindows(control);
    focus.ours = true;
    two.focusMoved();
    EXPECT_EQ(told, (Changes{{true, chord}, {false, control}}));
}

TEST_F(Dispatch, ARepeatedAccountOfOurWindowsIsToldOnce) {
    focus.ours = true;
    two.sawInOwnWindows(control);
    two.sawInOwnWindows(control);
    EXPECT_EQ(told, (Changes{{false, control}}));
}

TEST_F(Dispatch, AChordHeldWhileTheKeyboardComesToUsEndsOnce) {
    two.sawEverywhere(chord);
    // The toolkit learns of the keys before it learns that the window is active.
    two.sawInOwnWindows(chord);
    focus.ours = true;
    two.focusMoved();
    EXPECT_EQ(told, (Changes{{true, chord}}));
    two.sawInOwnWindows(0);
    two.sawEverywhere(0);
    EXPECT_EQ(told, (Changes{{true, chord}, {false, 0}}));
}

TEST_F(Dispatch, KeysThatNobodyToldOfBeforeTheKeyboardCameToUsAreNoNewPress) {
    two.sawInOwnWindows(chord);
    focus.ours = true;
    two.focusMoved();
    two.sawInOwnWindows(control);
    two.sawInOwnWindows(0);
    EXPECT_EQ(told, Changes{});
    two.sawInOwnWindows(chord);
    EXPECT_EQ(told, (Changes{{false, chord}}));
}

TEST_F(Dispatch, KeysThatNobodyToldOfAreNoNewPressEachTimeThatTheKeyboardComesToUs) {
    for (int time = 0; time < 2; ++time) {
        two.sawInOwnWindows(chord);
        focus.ours = true;
        two.focusMoved();
        two.sawInOwnWindows(0);
        focus.ours = false;
        two.focusMoved();
    }
    EXPECT_EQ(told, Changes{});
}

TEST_F(Dispatch, AShortcutThatBroughtOurWindowUpIsNoPressInIt) {
    two.sawEverywhere(chord); // the desktop's shortcut is pressed and let go of
    two.sawEverywhere(0);
    two.sawInOwnWindows(chord); // its modifiers are held a moment longer
    focus.ours = true;
    two.focusMoved();
    two.sawInOwnWindows(0);
    EXPECT_EQ(told, (Changes{{true, chord}, {true, 0}}));
}

TEST_F(Dispatch, AShortcutPressedInOurWindowIsWhatOurWindowSees) {
    focus.ours = true;
    two.focusMoved();
    two.sawInOwnWindows(chord);
    two.sawEverywhere(chord);
    two.sawEverywhere(0);
    two.sawInOwnWindows(0);
    EXPECT_EQ(told, (Changes{{false, chord}, {false, 0}}));
}

TEST_F(Dispatch, WhatIsHeldWhenTheKeyboardLeavesUsIsTheOtherSourcesBusiness) {
    focus.ours = true;
    two.sawInOwnWindows(chord);
    two.sawEverywhere(chord);
    focus.ours = false;
    two.focusMoved();
    EXPECT_EQ(told, (Changes{{false, chord}}));
    two.sawEverywhere(0);
    EXPECT_EQ(told, (Changes{{false, chord}, {true, 0}}));
}

TEST_F(Dispatch, WhatNobodySeesAnyMoreIsNotDown) {
    focus.ours = true;
    two.sawInOwnWindows(chord);
    focus.ours = false;
    two.focusMoved();
    EXPECT_EQ(told, (Changes{{false, chord}, {true, 0}}));
}

TEST_F(Dispatch, AnotherPressIsToldWhileTheChordIsDownAndGoesByTheFocus) {
    one.sawEverywhere(chord | shift);
    one.sawOtherPress();
    focus.ours = true;
    one.sawOtherPress();
    EXPECT_EQ(presses, (std::vector<bool>{false, true}));
}

TEST_F(Dispatch, WhatIsTypedWithoutTheChordIsNotToldAndAsksForNoFocus) {
    one.sawOtherPress();
    one.sawEverywhere(control);
    one.sawOtherPress();
    one.sawEverywhere(option | shift | command);
    one.sawOtherPress();
    one.sawEverywhere(chord);
    one.sawEverywhere(control);
    focus.asked = 0;
    one.sawOtherPress();
    EXPECT_TRUE(presses.empty());
    EXPECT_EQ(focus.asked, 0);
}

TEST_F(Dispatch, AnotherPressGoesByTheChordThatWasTold) {
    focus.ours = true;
    two.sawEverywhere(chord); // does not count in our windows
    two.sawOtherPress();
    EXPECT_TRUE(presses.empty());
    two.sawInOwnWindows(chord);
    two.sawOtherPress();
    EXPECT_EQ(presses, std::vector<bool>{true});
}

} // namespace kelo::tests
