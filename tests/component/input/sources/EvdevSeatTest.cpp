#include "EvdevFixture.h"

#include <gmock/gmock.h>

// Whose keyboards count: seats, and keyboards that go in the middle of a press.

namespace kelo {

using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using EvdevLoss = EvdevFixture;
using EvdevSeat = EvdevFixture;

} // namespace

TEST_F(EvdevLoss, KeyboardThatGoesInTheMiddleOfAPressLeavesNoTap) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.unplug("event0");
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(chord, press, 0));
}

TEST_F(EvdevLoss, KeysThatTheKernelReleasesBeforeTheKeyboardGoesLeaveNoTap) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboard.held = {};
    ASSERT_TRUE(keyboard.type(up(KEY_LEFTCTRL) + up(KEY_LEFTALT) + madeUpReport()));
    settle();
    EXPECT_THAT(heard, ElementsAre(chord, press, 0));
    keyboards.unplug("event0");
    ASSERT_TRUE(waitUntilOpen(0));
    EXPECT_THAT(heard, ElementsAre(chord, press, 0));
}

TEST_F(EvdevLoss, RepeatedKeyWhoseReportTheKernelMakesUpIsNothing) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    ASSERT_TRUE(keyboard.type(repeated(KEY_LEFTALT) + madeUpReport() + chordUp));
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(chord, control, 0));
}

TEST_F(EvdevLoss, KeyboardThatGoesWithOneOfTheTwoModifiersLeavesNoTap) {
    auto& first = keyboards.plug("event0");
    auto& second = keyboards.plug("event1");
    ASSERT_TRUE(start());
    first.held.leftControl = true;
    ASSERT_TRUE(first.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    second.held.leftAlt = true;
    ASSERT_TRUE(second.type(down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(2));
    keyboards.unplug("event1");
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control, chord, press, control));
}

TEST_F(EvdevLoss, KeyboardThatGoesWithNoKeyDownEndsNoPress) {
    auto& first = keyboards.plug("event0");
    keyboards.plug("event1");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(first));
    keyboards.unplug("event1");
    ASSERT_TRUE(waitUntilOpen(1));
    ASSERT_TRUE(first.type(chordUp));
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(chord, control, 0));
}

TEST_F(EvdevLoss, NodeThatIsReplacedInTheMiddleOfAPressLeavesNoTap) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.replace("event0");
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(chord, press, 0));
}

TEST_F(EvdevLoss, WhoHearsOfItMayLetTheSourceGo) {
    auto& keyboard = keyboards.plug("event0");
    source = std::make_unique<input::EvdevModifierSource>(keyboards.devices());
    source->onOtherPress([this] {
        heard.push_back(press);
        source.reset();
    });
    ASSERT_TRUE(source->start([this](platform::ModifierFlags flags) { heard.push_back(flags); }));
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.unplug("event0");
    ASSERT_TRUE(waitFor(2));
    settle();
    EXPECT_THAT(heard, ElementsAre(chord, press));
}

TEST_F(EvdevLoss, DeviceThatWasTakenAwayIsReadAgainWhenItsNodeIsPermitted) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.revoke("event0");
    ASSERT_TRUE(waitFor(3));
    EXPECT_EQ(keyboards.openNow, 0);
    keyboard.connect();
    keyboards.permit("event0");
    ASSERT_TRUE(waitUntilOpen(1));
    EXPECT_THAT(heard, ElementsAre(chord, press, 0)) << "what was held before does not count";
    heard.clear();
    keyboard.held = {};
    ASSERT_TRUE(keyboard.type(chordUp));
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevLoss, KeyboardThatIsPluggedInAgainCountsWithTheKeysThatAreDown) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    // The device ends first, and its node goes only after that was seen.
    keyboards.revoke("event0");
    ASSERT_TRUE(waitFor(3));
    keyboards.unplug("event0");
    FakeKeyboard again;
    again.held.leftControl = true;
    keyboards.plug("event0", std::move(again));
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(chord, press, 0, control));
}

TEST_F(EvdevSeat, KeyboardOfAnotherSeatNeverCounts) {
    auto& ours = keyboards.plug("event0");
    const auto& theirs = keyboards.plug("event1");
    keyboards.seats->assign("event1", "seat1");
    ASSERT_TRUE(start());
    EXPECT_EQ(keyboards.openNow, 1);
    ASSERT_TRUE(theirs.type(down(KEY_LEFTCTRL) + report()));
    ours.held.leftAlt = true;
    ASSERT_TRUE(ours.type(down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option));
}

TEST_F(EvdevSeat, KeyboardOfAnotherSeatThatComesLaterIsNotEvenOpened) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    const int before = keyboards.opened;
    keyboards.seats->assign("event1", "seat1");
    keyboards.plug("event1");
    keyboards.plug("event2");
    ASSERT_TRUE(waitUntilOpen(2));
    EXPECT_EQ(keyboards.opened, before + 1);
}

TEST_F(EvdevSeat, KeyboardsOfThisSeatAreReadWhateverItIsCalled) {
    keyboards.session->seat = "seat1";
    keyboards.plug("event0");
    auto& ours = keyboards.plug("event1");
    keyboards.seats->assign("event1", "seat1");
    ASSERT_TRUE(start());
    EXPECT_EQ(keyboards.openNow, 1);
    ASSERT_TRUE(holdChord(ours));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSeat, SessionWithoutASeatHasNoKeyboard) {
    keyboards.session->seat = "";
    keyboards.plug("event0");
    start();
    EXPECT_EQ(keyboards.openNow, 0);
    const auto found = availability();
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("belong to another seat"));
    EXPECT_THAT(found.advice, HasSubstr("kelo --widget"));
}

TEST_F(EvdevSeat, KeyboardOfAnotherSeatAloneIsNotAvailable) {
    keyboards.plug("event0");
    keyboards.seats->assign("event0", "seat1");
    EXPECT_THAT(availability().reason, HasSubstr("belong to another seat"));
    EXPECT_EQ(keyboards.opened, 0);
    keyboards.plug("event1");
    EXPECT_TRUE(availability().available);
}

TEST_F(EvdevSeat, KeyboardThatIsGivenToAnotherSeatIsLetGoAndLeavesNoTap) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.seats->assign("event0", "seat1");
    EXPECT_THAT(heard, ElementsAre(chord, press, 0));
    EXPECT_EQ(keyboards.openNow, 0);
}

TEST_F(EvdevSeat, KeyboardThatIsGivenToThisSeatCountsOnceItsKeysAreReleased) {
    keyboards.plug("event0");
    auto& keyboard = keyboards.plug("event1");
    keyboards.seats->assign("event1", "seat1");
    ASSERT_TRUE(start());
    keyboard.held = {.leftControl = true, .leftAlt = true};
    keyboards.seats->assign("event1", "seat0");
    EXPECT_EQ(keyboards.openNow, 2);
    EXPECT_THAT(heard, IsEmpty());
    keyboard.held = {};
    ASSERT_TRUE(keyboard.type(chordUp));
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSeat, KeyboardThatCameToAnotherSeatFirstCountsOnceItsKeysAreReleased) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.seats->assign("event1", "seat1");
    auto& keyboard = keyboards.plug("event1");
    keyboards.plug("event2");
    ASSERT_TRUE(waitUntilOpen(2));
    keyboard.held = {.leftControl = true, .leftAlt = true};
    keyboards.seats->assign("event1", "seat0");
    EXPECT_EQ(keyboards.openNow, 3);
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(EvdevSeat, NewsOfADeviceThatStaysWithThisSeatChangesNothing) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.seats->changed("event0");
    keyboards.seats->changed("event7");
    keyboards.plug("mouse0");
    keyboards.seats->changed("mouse0");
    EXPECT_EQ(keyboards.openNow, 1);
    EXPECT_THAT(heard, ElementsAre(chord));
}

} // namespace kelo
