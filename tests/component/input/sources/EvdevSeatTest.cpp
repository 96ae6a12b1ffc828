#include "EvdevFixture.h"

#include <gmock/gmock.h>

// Whose keyboards count, and when: seats, sessions, and keyboards that go in the middle of a press.

namespace kelo {

using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using EvdevLoss = EvdevFixture;
using EvdevSeat = EvdevFixture;
using EvdevSession = EvdevFixture;

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
    keyboards.unplug("event0");
    ASSERT_TRUE(waitFor(3));
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
    keyboards.seats->changed("mouse0");
    EXPECT_EQ(keyboards.openNow, 1);
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSession, NothingCountsBeforeItIsKnown) {
    keyboards.session->certain = false;
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboard.held = {.leftControl = true, .leftAlt = true};
    ASSERT_TRUE(keyboard.type(chordDown));
    settle();
    EXPECT_FALSE(keyboard.isOpen);
    keyboards.session->certain = true;
    keyboards.session->changed();
    EXPECT_THAT(heard, IsEmpty());
    keyboard.held = {};
    ASSERT_TRUE(keyboard.type(chordUp));
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control, 0)) << "the press that nobody heard of is none";
    heard.clear();
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSession, KeyboardsOfOtherSeatsAreLetGoOnceItIsKnown) {
    keyboards.session->certain = false;
    keyboards.session->seat = "seat1";
    keyboards.plug("event0");
    keyboards.plug("event1");
    keyboards.seats->assign("event1", "seat1");
    ASSERT_TRUE(start());
    EXPECT_EQ(keyboards.openNow, 2);
    keyboards.session->certain = true;
    keyboards.session->changed();
    EXPECT_EQ(keyboards.openNow, 1);
}

TEST_F(EvdevSession, ThatLeavesTheScreenEndsThePressWithoutATap) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.session->set(false);
    EXPECT_THAT(heard, ElementsAre(chord, press, 0));
}

TEST_F(EvdevSession, ThatLeavesTheScreenWithNoKeyDownIsNoPress) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.session->set(false);
    keyboards.session->set(true);
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_EQ(keyboards.openNow, 1);
}

TEST_F(EvdevSession, ReadsNoKeyboardWhileAnotherHasTheScreen) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.session->set(false);
    EXPECT_EQ(keyboards.openNow, 0);
    const int before = keyboards.opened;
    keyboards.plug("event1");
    keyboards.permit("event0");
    settle();
    keyboards.seats->assign("event0", "seat0");
    EXPECT_EQ(keyboards.opened, before);
    EXPECT_THAT(heard, IsEmpty());
    keyboards.session->set(true);
    EXPECT_EQ(keyboards.openNow, 2);
}

TEST_F(EvdevSession, WhatIsDownWhenItComesBackCountsOnlyWhenItIsPressedAgain) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.session->set(false);
    // As they are after Ctrl+Alt+F2, the desktop's own way from one to the other.
    keyboard.held = {.leftControl = true, .leftAlt = true};
    keyboards.session->set(true);
    EXPECT_EQ(keyboards.openNow, 1);
    keyboard.held = {.leftControl = true};
    ASSERT_TRUE(keyboard.type(up(KEY_LEFTALT) + report()));
    keyboard.held.leftAlt = true;
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option)) << "Ctrl has been down all the time";
    keyboard.held = {};
    ASSERT_TRUE(keyboard.type(chordUp));
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(option, 0, chord));
}

TEST_F(EvdevSession, WhatIsDownOnANodeThatIsPermittedAfterItCameBackDoesNotCountEither) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.session->set(false);
    keyboard.held = {.leftControl = true, .leftAlt = true};
    keyboard.mayBeOpened = false;
    keyboards.session->set(true);
    EXPECT_EQ(keyboards.openNow, 0);
    keyboards.permit("event0");
    ASSERT_TRUE(waitUntilOpen(1));
    settle();
    EXPECT_THAT(heard, IsEmpty());
    keyboard.held = {};
    ASSERT_TRUE(keyboard.type(chordUp));
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSession, KeyboardThatIsPluggedInAfterItCameBackCountsAtOnce) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.session->set(false);
    keyboards.session->set(true);
    FakeKeyboard late;
    late.held.leftAlt = true;
    keyboards.plug("event1", std::move(late));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option));
}

TEST_F(EvdevSession, DeviceThatWasTakenAwayMeanwhileComesBackWithIt) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.revoke("event0");
    ASSERT_TRUE(waitUntilOpen(0));
    keyboards.session->set(false);
    keyboard.connect();
    keyboards.session->set(true);
    EXPECT_EQ(keyboards.openNow, 1);
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSession, ThatIsNotOnTheScreenAtTheStartCountsOnceItIs) {
    keyboards.session->active = false;
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    EXPECT_EQ(keyboards.openNow, 0);
    keyboards.session->set(true);
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSession, NewsThatChangeNothingCostNothing) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    const int before = keyboards.opened;
    keyboards.session->set(true);
    EXPECT_EQ(keyboards.opened, before);
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(EvdevSession, WhoHearsOfItsEndMayLetTheSourceGo) {
    auto& keyboard = keyboards.plug("event0");
    source = std::make_unique<input::EvdevModifierSource>(keyboards.devices());
    source->onOtherPress([this] { heard.push_back(press); });
    ASSERT_TRUE(source->start([this](platform::ModifierFlags flags) {
        heard.push_back(flags);
        if (flags == 0)
            source.reset();
    }));
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.session->set(false);
    EXPECT_THAT(heard, ElementsAre(chord, press, 0));
    EXPECT_FALSE(source);
}

} // namespace kelo
