#include "EvdevFixture.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>

namespace kelo {

using input::EvdevModifierSource;
using platform::ModifierFlags;
using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class EvdevSource : public EvdevFixture {
protected:
    /// Nobody asks for other presses.
    bool start() {
        source = std::make_unique<EvdevModifierSource>(keyboards.devices());
        return source->start([this](ModifierFlags flags) { heard.push_back(flags); });
    }
};

TEST_F(EvdevSource, TellsAllTheModifiersThatAreDownAfterEachChange) {
    const auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(
        keyboard.type(chordDown + up(KEY_LEFTCTRL) + report() + up(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control, control | option, option, 0));
    EXPECT_FALSE(source->coversOwnWindows());
}

TEST_F(EvdevSource, SaysNothingFromWithinStartAlsoWhenKeysAreDown) {
    keyboards.plug("event0").held.leftControl = true;
    ASSERT_TRUE(start());
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(EvdevSource, CountsTheKeysThatWereDownAtTheStart) {
    auto& keyboard = keyboards.plug("event0");
    keyboard.held.leftControl = true;
    ASSERT_TRUE(start());
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(control | option));
}

TEST_F(EvdevSource, OneControlKeepsTheModifierWhenTheOtherIsReleased) {
    const auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report() + down(KEY_RIGHTCTRL) + report() +
                              up(KEY_LEFTCTRL) + report() + up(KEY_RIGHTCTRL) + report()));
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control, 0));
}

TEST_F(EvdevSource, TheChordMayBeSpreadOverTwoKeyboards) {
    const auto& first = keyboards.plug("event0");
    const auto& second = keyboards.plug("event11");
    ASSERT_TRUE(start());
    ASSERT_TRUE(first.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    ASSERT_TRUE(second.type(down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(2));
    ASSERT_TRUE(second.type(down(KEY_LEFTCTRL) + report() + up(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(3));
    ASSERT_TRUE(first.type(up(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(second.type(up(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control, control | option, control, 0));
}

TEST_F(EvdevSource, UnpluggingReleasesTheKeysOfThatKeyboardAlone) {
    const auto& first = keyboards.plug("event0");
    const auto& second = keyboards.plug("event1");
    ASSERT_TRUE(start());
    ASSERT_TRUE(second.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
    ASSERT_TRUE(first.type(chordDown));
    ASSERT_TRUE(waitFor(2));
    keyboards.unplug("event0");
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, control | option, control));
    EXPECT_EQ(keyboards.openNow, 1);
}

TEST_F(EvdevSource, ADeviceThatEndsWhileItsNodeStaysIsLetGo) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(keyboard.type(chordDown));
    ASSERT_TRUE(waitFor(2));
    keyboard.writing = posix::FileDescriptor();
    ASSERT_TRUE(waitFor(3));
    EXPECT_EQ(heard.back(), 0U);
    EXPECT_EQ(keyboards.openNow, 0);
}

TEST_F(EvdevSource, AKeyboardThatComesLaterCounts) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    const auto& late = keyboards.plug("event7");
    ASSERT_TRUE(waitUntilOpen(2));
    ASSERT_TRUE(late.type(chordDown));
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control, control | option));
}

TEST_F(EvdevSource, AKeyboardThatComesWithAKeyDownIsToldAtOnce) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    FakeKeyboard held;
    held.held.leftAlt = true;
    keyboards.plug("event7", std::move(held));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option));
}

TEST_F(EvdevSource, ANodeThatIsPermittedAfterItAppearedCounts) {
    keyboards.plug("event0");
    ASSERT_TRUE(start());
    const int before = keyboards.opened;
    FakeKeyboard closed;
    closed.mayBeOpened = false;
    const auto& late = keyboards.plug("event7", std::move(closed));
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return keyboards.opened > before; }));
    EXPECT_EQ(keyboards.openNow, 1);
    keyboards.permit("event7");
    ASSERT_TRUE(waitUntilOpen(2));
    ASSERT_TRUE(late.type(chordDown));
    ASSERT_TRUE(waitFor(2));
}

TEST_F(EvdevSource, ChangedPermissionsOfAnOpenKeyboardOpenNoSecond) {
    const auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    keyboards.permit("event0");
    keyboards.plug("event1");
    ASSERT_TRUE(waitUntilOpen(2));
    EXPECT_EQ(keyboards.opened, 2);
    ASSERT_TRUE(keyboard.type(down(KEY_LEFTCTRL) + report()));
    ASSERT_TRUE(waitFor(1));
}

TEST_F(EvdevSource, AKeyboardCanBeUnpluggedAndPluggedInAgain) {
    const auto& first = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(first.type(chordDown));
    ASSERT_TRUE(waitFor(2));
    keyboards.unplug("event0");
    ASSERT_TRUE(waitFor(3));
    const auto& again = keyboards.plug("event0");
    ASSERT_TRUE(waitUntilOpen(1));
    ASSERT_TRUE(again.type(chordDown));
    ASSERT_TRUE(waitFor(5));
    EXPECT_THAT(heard, ElementsAre(control, control | option, 0, control, control | option));
}

TEST_F(EvdevSource, KeysAreHeldBackBeforeAnythingIsReadOfAKeyboard) {
    const auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    EXPECT_EQ(keyboard.asked, "mask held ");
}

TEST_F(EvdevSource, AKeyboardWhoseOtherKeysCannotBeHeldBackIsNotRead) {
    FakeKeyboard old;
    old.holdsBackOtherKeys = false;
    const auto& keyboard = keyboards.plug("event0", std::move(old));
    const auto found = availability();
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("does not read what you type"));
    EXPECT_THAT(found.advice, HasSubstr("4.4"));
    EXPECT_FALSE(start());
    EXPECT_EQ(keyboards.openNow, 0);
    EXPECT_THAT(keyboard.asked, testing::Not(HasSubstr("held")));
}

TEST_F(EvdevSource, WhatIsNoKeyboardIsLeftAlone) {
    FakeKeyboard mouse;
    mouse.isKeyboard = false;
    const auto& device = keyboards.plug("event0", std::move(mouse));
    keyboards.plug("event1");
    keyboards.plug("mouse0");
    keyboards.plug("event");
    keyboards.plug("event1x");
    ASSERT_TRUE(start());
    EXPECT_EQ(keyboards.openNow, 1);
    EXPECT_EQ(keyboards.opened, 2);
    EXPECT_EQ(device.asked, "");
}

TEST_F(EvdevSource, ADeviceThatIsDescribedAsNoKeyboardIsNotEvenOpened) {
    keyboards.plug("event0");
    keyboards.describe("event0", "1f0000 0 0 0 0");
    keyboards.plug("event1");
    keyboards.describe("event1", "40000000 10000000000000");
    EXPECT_FALSE(availability().available);
    EXPECT_FALSE(start());
    EXPECT_EQ(keyboards.opened, 0);
}

TEST_F(EvdevSource, ADeviceThatIsDescribedAsAKeyboardIsRead) {
    keyboards.plug("event0");
    keyboards.describe("event0", "402000000 3803078f800d001 feffffdfffefffff fffffffffffffffe");
    ASSERT_TRUE(start());
    keyboards.plug("event1");
    keyboards.describe("event1", "200000000 0");
    ASSERT_TRUE(waitUntilOpen(2)) << "the right control key alone";
}

TEST_F(EvdevSource, ADescriptionThatMakesNoSenseIsNotBelieved) {
    keyboards.plug("event0");
    keyboards.describe("event0", "nothing");
    ASSERT_TRUE(start());
    keyboards.plug("event1");
    keyboards.describe("event1", "");
    ASSERT_TRUE(waitUntilOpen(2));
}

TEST_F(EvdevSource, LostEventsAreMadeUpForByAskingTheKeyboard) {
    auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(keyboard.type(chordDown));
    ASSERT_TRUE(waitFor(2));
    keyboard.held = {.rightControl = true};
    ASSERT_TRUE(keyboard.type(dropped() + down(KEY_A) + report()));
    ASSERT_TRUE(waitFor(3));
    EXPECT_EQ(heard.back(), control);
}

TEST_F(EvdevSource, AHandlerMayLetTheSourceGo) {
    const auto& keyboard = keyboards.plug("event0");
    source = std::make_unique<EvdevModifierSource>(keyboards.devices());
    ASSERT_TRUE(source->start([this](ModifierFlags flags) {
        heard.push_back(flags);
        source.reset();
    }));
    ASSERT_TRUE(keyboard.type(chordDown));
    ASSERT_TRUE(waitUntilOpen(0));
    EXPECT_THAT(heard, ElementsAre(control));
}

TEST_F(EvdevSource, NothingIsToldAndNothingStaysOpenOnceItIsGone) {
    const auto& keyboard = keyboards.plug("event0");
    ASSERT_TRUE(start());
    ASSERT_TRUE(keyboard.type(chordDown));
    source.reset();
    EXPECT_EQ(keyboards.openNow, 0);
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(EvdevSource, IsAvailableWhereOneKeyboardCanBeRead) {
    FakeKeyboard closed;
    closed.mayBeOpened = false;
    keyboards.plug("event0", std::move(closed));
    keyboards.plug("event1");
    const auto found = availability();
    EXPECT_TRUE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("no other key"));
    EXPECT_THAT(found.advice, IsEmpty());
    EXPECT_EQ(keyboards.openNow, 0) << "looking leaves nothing open";
}

TEST_F(EvdevSource, SaysThatTheDevicesCannotBeReadAndWhatThatWouldMean) {
    FakeKeyboard closed;
    closed.mayBeOpened = false;
    keyboards.plug("event0", std::move(closed));
    const auto found = availability();
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("cannot be read"));
    EXPECT_THAT(found.advice, HasSubstr("group \"input\""));
    EXPECT_THAT(found.advice, HasSubstr("every program you run can then read all that is typed"));
    EXPECT_FALSE(start());
}

/// Anybody but the administrator, who may read everything, until it goes.
class AsNobody {
public:
    AsNobody() {
        if (seteuid(65534) != 0)
            errno = 0;
    }
    ~AsNobody() {
        if (seteuid(getuid()) != 0)
            ADD_FAILURE() << "stays nobody";
    }
};

TEST_F(EvdevSource, AFolderThatCannotBeReadIsSaidToBe) {
    keyboards.plug("event0");
    std::filesystem::permissions(keyboards.path(), std::filesystem::perms::none);
    input::Availability found;
    bool started = true;
    {
        const AsNobody nobody;
        found = availability();
        started = start();
    }
    std::filesystem::permissions(keyboards.path(), std::filesystem::perms::owner_all);
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("cannot be read"));
    EXPECT_FALSE(started);
}

TEST_F(EvdevSource, LooksAtAllDevicesAgainWhenTheFolderItselfChanged) {
    keyboards.plug("event0");
    FakeKeyboard closed;
    closed.mayBeOpened = false;
    auto& late = keyboards.plug("event1", std::move(closed));
    ASSERT_TRUE(start());
    ASSERT_EQ(keyboards.openNow, 1);
    late.mayBeOpened = true;
    std::filesystem::permissions(keyboards.path(), std::filesystem::perms::owner_all);
    ASSERT_TRUE(waitUntilOpen(2));
}

TEST_F(EvdevSource, SaysThatThereIsNoKeyboard) {
    EXPECT_THAT(availability().reason, HasSubstr("no keyboard"));
    EXPECT_FALSE(start());
}

TEST_F(EvdevSource, AFolderThatIsMissingIsNoKeyboard) {
    auto devices = keyboards.devices();
    devices.folder /= "missing";
    EvdevModifierSource missing(devices);
    EXPECT_FALSE(missing.isAvailable());
    EXPECT_FALSE(missing.start([](ModifierFlags) {}));
}

TEST_F(EvdevSource, AFileThatIsNoDeviceIsLeftAlone) {
    keyboards.plug("event0");
    auto devices = keyboards.devices();
    devices.open = input::EvdevNode::open;
    EvdevModifierSource real(devices);
    EXPECT_THAT(real.availability().reason, HasSubstr("no keyboard"));
    EXPECT_FALSE(real.start([](ModifierFlags) {}));
}

} // namespace

} // namespace kelo
