#include "EvdevDevicesFixture.h"

#include <gmock/gmock.h>

// The device nodes, and the questions that are put to the kernel, as umockdev emulates them.

namespace kelo {

using platform::modifier::control;
using platform::modifier::option;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

TEST_F(EvdevDevices, KeyboardsAreFoundAmongTheDevicesAndRead) {
    devices.plug("event0", mouse());
    devices.plug("event1", keyboard());
    devices.plug("event2", mouse());
    EXPECT_TRUE(source.isAvailable());
    ASSERT_TRUE(start());
    ASSERT_TRUE(devices.type("event1", chordDown));
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control, control | option));
}

TEST_F(EvdevDevices, TheKernelIsToldToHandOutTheTwoModifiersAndNothingElse) {
    devices.plug("event1", keyboard());
    ASSERT_TRUE(start());
    EXPECT_THAT(devices.device("event1").masks,
                UnorderedElementsAre(
                    Pair(EV_SYN, UnorderedElementsAre(EV_SYN, EV_KEY)),
                    Pair(EV_KEY, UnorderedElementsAre(KEY_LEFTCTRL, KEY_LEFTALT, KEY_RIGHTCTRL))));
}

TEST_F(EvdevDevices, TheKernelIsToldToHandOutOtherKeysWhileAModifierIsDownAndNoLonger) {
    devices.plug("event1", keyboard());
    source.onOtherPress([this] { heard.push_back(press); });
    ASSERT_TRUE(start());
    const auto closed = devices.device("event1").masks;
    devices.setDown("event1", {KEY_LEFTCTRL});
    ASSERT_TRUE(devices.type("event1", down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    const auto open = devices.device("event1").masks;
    EXPECT_EQ(open.at(EV_SYN), closed.at(EV_SYN));
    EXPECT_THAT(open.at(EV_KEY), IsSupersetOf({KEY_LEFTCTRL, KEY_LEFTALT, KEY_RIGHTCTRL, KEY_ESC,
                                               KEY_A, KEY_F12, KEY_KP0, KEY_MICMUTE}));
    for (const int code : {KEY_LEFTSHIFT, KEY_RIGHTALT, KEY_LEFTMETA, BTN_LEFT, BTN_TOUCH})
        EXPECT_THAT(open.at(EV_KEY), Not(Contains(code)));
    ASSERT_TRUE(devices.type("event1", down(KEY_LEFTALT) + report() + down(KEY_A) + report() +
                                           up(KEY_LEFTALT) + report() + up(KEY_LEFTCTRL) +
                                           report()));
    ASSERT_TRUE(waitFor(5));
    EXPECT_THAT(heard, ElementsAre(control, control | option, press, control, 0));
    EXPECT_EQ(devices.device("event1").masks, closed);
}

TEST_F(EvdevDevices, AnotherKeyOfAShortcutSentAtOnceIsFoundAmongTheKeysThatAreDown) {
    devices.plug("event1", keyboard());
    source.onOtherPress([this] { heard.push_back(press); });
    ASSERT_TRUE(start());
    devices.setDown("event1", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_A});
    ASSERT_TRUE(devices.type("event1", chordDown));
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, control | option, press));
}

TEST_F(EvdevDevices, OtherModifiersThatAreDownAreNoOtherKey) {
    devices.plug("event1", keyboard());
    source.onOtherPress([this] { heard.push_back(press); });
    ASSERT_TRUE(start());
    devices.setDown("event1", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_RIGHTALT, KEY_LEFTSHIFT});
    ASSERT_TRUE(devices.type("event1", chordDown));
    ASSERT_TRUE(waitFor(2));
    devices.setDown("event1", {});
    ASSERT_TRUE(devices.type("event1", up(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, control | option, control));
}

TEST_F(EvdevDevices, AKernelWithoutMasksIsNotReadFrom) {
    EmulatedDevice old = keyboard();
    old.knowsMasks = false;
    devices.plug("event1", old);
    EXPECT_FALSE(source.isAvailable());
    EXPECT_THAT(source.availability().advice, HasSubstr("4.4"));
    EXPECT_FALSE(start());
    EXPECT_FALSE(devices.device("event1").wasAskedWhatIsDown);
}

TEST_F(EvdevDevices, MiceAloneAreNoKeyboard) {
    devices.plug("event0", mouse());
    EXPECT_THAT(source.availability().reason, HasSubstr("no keyboard"));
    EXPECT_FALSE(start());
}

TEST_F(EvdevDevices, KeysThatAreDownAtTheStartCount) {
    devices.plug("event1", keyboard());
    devices.setDown("event1", {KEY_A, KEY_RIGHTCTRL});
    ASSERT_TRUE(start());
    ASSERT_TRUE(devices.type("event1", down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(control | option));
}

TEST_F(EvdevDevices, LostEventsAreMadeUpForByAskingTheKernel) {
    devices.plug("event1", keyboard());
    ASSERT_TRUE(start());
    devices.setDown("event1", {KEY_LEFTALT});
    ASSERT_TRUE(devices.type("event1", dropped() + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option));
}

TEST_F(EvdevDevices, AKeyboardIsPluggedInWhileWatching) {
    devices.plug("event1", keyboard());
    ASSERT_TRUE(start());
    devices.plug("event2", mouse());
    devices.plug("event3", keyboard());
    ASSERT_TRUE(
        ScopedMainLoop::runUntil([&] { return devices.device("event3").wasAskedWhatIsDown; }));
    ASSERT_TRUE(devices.type("event3", chordDown));
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control, control | option));
    EXPECT_THAT(devices.device("event2").masks, IsEmpty());
}

TEST_F(EvdevDevices, UnpluggingInTheMiddleOfTheChordReleasesIt) {
    devices.plug("event1", keyboard());
    ASSERT_TRUE(start());
    ASSERT_TRUE(devices.type("event1", chordDown));
    ASSERT_TRUE(waitFor(2));
    devices.unplug("event1");
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, control | option, 0));
}

} // namespace kelo
