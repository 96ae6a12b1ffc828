#include "EvdevFixture.h"

#include <gmock/gmock.h>

// When keyboards count: while the session that they belong to has the screen.

namespace kelo {

using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using EvdevSession = EvdevFixture;

} // namespace

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
    const int opened = keyboards.opened;
    const int questions = keyboards.seats->questions;
    keyboards.session->set(true);
    EXPECT_EQ(keyboards.opened, opened);
    EXPECT_EQ(keyboards.seats->questions, questions);
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
