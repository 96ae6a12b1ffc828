#include "EvdevFixture.h"

#include <gmock/gmock.h>

namespace kelo {

using input::EvdevModifierSource;
using platform::ModifierFlags;
using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// Other keys that are pressed while Ctrl or Alt is down.
using EvdevOtherPress = EvdevFixture;

TEST_F(EvdevOtherPress, IsToldInOrderWithTheModifiers) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboard.held.leftControl = true;
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTALT) + report() + down(KEY_T) + report() + up(KEY_T) +
                              report() + up(KEY_LEFTALT) + report() + up(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(5));
    EXPECT_THAT(heard, ElementsAre(control, chord, press, control, 0));
}

TEST_F(EvdevOtherPress, IsAskedOfTheKernelOnlyWhileAKeyOfTheChordIsDown) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    EXPECT_FALSE(keyboard.isOpen);
    for (const int code : {KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT}) {
        heard.clear();
        keyboard.held = {};
        keyboard.held.set(static_cast<std::uint16_t>(code), true);
        ASSERT_TRUE(keyboard.type(down(code) + report()));
        ASSERT_TRUE(waitFor(1));
        EXPECT_TRUE(keyboard.isOpen);
        ASSERT_TRUE(keyboard.type(up(code) + report()));
        ASSERT_TRUE(waitFor(2));
        EXPECT_FALSE(keyboard.isOpen);
    }
    EXPECT_EQ(keyboard.asked, "mask held open down mask open down mask open down mask ");
}

TEST_F(EvdevOtherPress, IsNotAskedOfTheKernelWhereNobodyWantsToKnow) {
    const auto& keyboard = keyboards.plug("event0");
    source = std::make_unique<EvdevModifierSource>(keyboards.devices());
    ASSERT_TRUE(source->start([this](ModifierFlags flags) { heard.push_back(flags); }));
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_EQ(keyboard.asked, "mask held ");
}

TEST_F(EvdevOtherPress, OnAnotherKeyboardCounts) {
    auto& first = keyboards.plug("event0");
    auto& second = keyboards.plug("event1");
    ASSERT_TRUE(start());
    first.held = {.leftControl = true, .leftAlt = true};
    ASSERT_TRUE(first.type(down(KEY_LEFTCTRL) + down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_TRUE(second.isOpen);
    ASSERT_TRUE(second.type(down(KEY_T) + report()));
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(chord, press));
}

TEST_F(EvdevOtherPress, OnAKeyboardThatComesMeanwhileCounts) {
    auto& first = keyboards.plug("event0");
    ASSERT_TRUE(start());
    first.held.leftControl = true;
    ASSERT_TRUE(first.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    const auto& late = keyboards.plug("event1");
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return late.isOpen; }));
    ASSERT_TRUE(late.type(down(KEY_T) + report()));
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control, press));
}

TEST_F(EvdevOtherPress, BeforeTheKernelWasAskedIsSeenAmongTheKeysThatAreDown) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    // A macro key: the other key went down with the modifiers, while the mask was still closed.
    keyboard.held = {.leftControl = true, .leftAlt = true};
    keyboard.othersDown = true;
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(3));
    ASSERT_TRUE(keyboard.type(up(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control, chord, press, control));
}

TEST_F(EvdevOtherPress, ReadWithItsModifiersIsToldBeforeTheKernelIsAsked) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    // Released before the keyboard could be asked.
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report() + down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, chord, 0));
    EXPECT_FALSE(keyboard.isOpen);
}

TEST_F(EvdevOtherPress, EndsWithTheKeyboardThatIsUnplugged) {
    auto& first = keyboards.plug("event0");
    const auto& second = keyboards.plug("event1");
    ASSERT_TRUE(start());
    first.held.leftControl = true;
    ASSERT_TRUE(first.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_TRUE(second.isOpen);
    keyboards.unplug("event0");
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, press, 0));
    EXPECT_FALSE(second.isOpen);
}

TEST_F(EvdevOtherPress, OfAKeyboardWhoseKeysCannotBeHeldBackAgainIsNotRead) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboard.held.leftControl = true;
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    keyboard.holdsBackOtherKeys = false;
    ASSERT_TRUE(keyboard.type(up(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(2));
    EXPECT_EQ(keyboards.openNow, 0);
    EXPECT_THAT(heard, ElementsAre(control, 0));
}

TEST_F(EvdevOtherPress, MayLetTheSourceGo) {
    auto& keyboard = keyboards.plug("event0");
    source = std::make_unique<EvdevModifierSource>(keyboards.devices());
    source->onOtherPress([this] {
        heard.push_back(press);
        source.reset();
    });
    ASSERT_TRUE(source->start([this](ModifierFlags flags) { heard.push_back(flags); }));
    keyboard.held.leftControl = true;
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    ASSERT_TRUE(keyboard.type(down(KEY_T) + report() + down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return keyboards.openNow == 0; }));
    EXPECT_THAT(heard, ElementsAre(control, press));
}

TEST_F(EvdevOtherPress, IsSpokenOfToTheUser) {
    keyboards.plug("event0");
    const auto reason = EvdevModifierSource(keyboards.devices()).availability().reason;
    EXPECT_THAT(reason, HasSubstr("also learns that another key is pressed"));
    EXPECT_THAT(reason, HasSubstr("At other times it learns of no other key."));
}

} // namespace

} // namespace kelo
