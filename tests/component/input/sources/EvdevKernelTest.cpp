#include "FakeKeyboards.h"
#include "KernelKeyboard.h"

#include "component/ScopedMainLoop.h"
#include "linux/input/evdev/EvdevModifierSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <set>

// The kernel's own devices in /dev/input.

namespace kelo {

using platform::ModifierFlags;
using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr ModifierFlags chord = control | option;
/// Stands for another press in the list of what was heard. No modifier has this bit.
constexpr ModifierFlags press = ModifierFlags{1} << 60;

/// A device that is counted while it is open.
class CountedDevice final : public input::EvdevDevice {
public:
    CountedDevice(std::unique_ptr<input::EvdevDevice> device, std::multiset<int>& open)
        : device(std::move(device)), open(open) {
        open.insert(descriptor());
    }
    ~CountedDevice() override { open.erase(descriptor()); }
    CountedDevice(const CountedDevice&) = delete;
    CountedDevice& operator=(const CountedDevice&) = delete;
    int descriptor() const override { return device->descriptor(); }
    bool isKeyboard() const override { return device->isKeyboard(); }
    bool deliverOnlyHeldKeys() override { return device->deliverOnlyHeldKeys(); }
    bool deliverOtherKeys() override { return device->deliverOtherKeys(); }
    std::optional<input::HeldKeys> heldKeys() const override { return device->heldKeys(); }
    std::optional<input::KeysDown> keysDown() const override { return device->keysDown(); }

private:
    std::unique_ptr<input::EvdevDevice> device;
    std::multiset<int>& open;
};

/// Everybody's rights and not the administrator's, until it goes.
class AsNobody {
public:
    AsNobody() { EXPECT_EQ(seteuid(65534), 0); }
    ~AsNobody() { EXPECT_EQ(seteuid(getuid()), 0); }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;
};

class EvdevKernel : public testing::Test {
protected:
    KernelKeyboard& plug() {
        keyboards.push_back(std::make_unique<KernelKeyboard>());
        ours.insert(keyboards.back()->name());
        return *keyboards.back();
    }
    bool start() {
        input::EvdevDevices devices;
        devices.open = [this](const std::filesystem::path& path) { return open(path); };
        devices.session = [this](session::SeatSession::Changed changed) {
            return std::make_unique<FakeSeatSession>(session, std::move(changed));
        };
        source = std::make_unique<input::EvdevModifierSource>(devices);
        source->onOtherPress([this] { heard.push_back(press); });
        return source->start([this](ModifierFlags flags) { heard.push_back(flags); });
    }
    bool waitFor(std::size_t count) const {
        return ScopedMainLoop::runUntil([&] { return heard.size() >= count; });
    }
    bool waitUntilOpen(std::size_t count) const {
        return ScopedMainLoop::runUntil([&] { return openNow.size() == count; });
    }
    bool holdChord(const KernelKeyboard& keyboard) {
        const std::size_t before = heard.size();
        keyboard.press(KEY_LEFTCTRL);
        keyboard.press(KEY_LEFTALT);
        return waitFor(before + 2);
    }

    ScopedMainLoop loop;
    std::vector<std::unique_ptr<KernelKeyboard>> keyboards;
    std::shared_ptr<FakeSeatSession::State> session = std::make_shared<FakeSeatSession::State>();
    /// The descriptors of the devices that are open.
    std::multiset<int> openNow;
    int refused = 0;
    std::unique_ptr<input::EvdevModifierSource> source;
    std::vector<ModifierFlags> heard;

private:
    /// The keyboards of whoever runs the test are left alone.
    std::unique_ptr<input::EvdevDevice> open(const std::filesystem::path& path) {
        auto device = ours.contains(path.filename()) ? input::EvdevNode::open(path) : nullptr;
        if (!device) {
            ++refused;
            return nullptr;
        }
        return std::make_unique<CountedDevice>(std::move(device), openNow);
    }

    std::set<std::string> ours;
};

} // namespace

TEST_F(EvdevKernel, ChordIsHeard) {
    const auto& keyboard = plug();
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    keyboard.release(KEY_LEFTCTRL);
    ASSERT_TRUE(waitFor(3));
    keyboard.release(KEY_LEFTALT);
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control, chord, option, 0));
}

TEST_F(EvdevKernel, ChordMayBeSpreadOverTwoKeyboards) {
    const auto& first = plug();
    const auto& second = plug();
    ASSERT_TRUE(start());
    first.press(KEY_RIGHTCTRL);
    ASSERT_TRUE(waitFor(1));
    second.press(KEY_LEFTALT);
    ASSERT_TRUE(waitFor(2));
    first.release(KEY_RIGHTCTRL);
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, chord, option));
}

TEST_F(EvdevKernel, OtherKeyIsHeldBackUnlessAModifierIsDown) {
    const auto& keyboard = plug();
    ASSERT_TRUE(start());
    keyboard.press(KEY_F24);
    keyboard.release(KEY_F24);
    keyboard.press(KEY_LEFTCTRL);
    ASSERT_TRUE(waitFor(1));
    keyboard.press(KEY_F24);
    ASSERT_TRUE(waitFor(2));
    keyboard.release(KEY_LEFTCTRL);
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, press, 0));
}

TEST_F(EvdevKernel, KeyboardThatComesWhileKeloRunsCounts) {
    plug();
    ASSERT_TRUE(start());
    const auto& late = plug();
    ASSERT_TRUE(waitUntilOpen(2));
    ASSERT_TRUE(holdChord(late));
    EXPECT_THAT(heard, ElementsAre(control, chord));
}

TEST_F(EvdevKernel, KeyboardThatGoesInTheMiddleOfAPressLeavesNoTapAndNoModifier) {
    plug();
    ASSERT_TRUE(start());
    const auto& keyboard = plug();
    ASSERT_TRUE(waitUntilOpen(2));
    ASSERT_TRUE(holdChord(keyboard));
    keyboards.pop_back();
    ASSERT_TRUE(waitFor(4));
    // The kernel may release the keys itself before the device ends.
    EXPECT_EQ(heard.back(), 0U);
    EXPECT_EQ(std::ranges::count(heard, press), 1);
    EXPECT_EQ(openNow.size(), 1U);
}

TEST_F(EvdevKernel, KeysThatTheKernelReleasesLeaveNoTap) {
    const auto& keyboard = plug();
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    if (!keyboard.inhibit())
        GTEST_SKIP() << "only the administrator silences a keyboard, and only since Linux 5.11";
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control, chord, press, 0));
}

TEST_F(EvdevKernel, NodeThatGetsItsRightsAMomentAfterItAppearedIsRead) {
    if (getuid() != 0)
        GTEST_SKIP() << "only the administrator gives rights";
    plug();
    ASSERT_TRUE(start());
    const auto& late = plug();
    const auto node = std::filesystem::path("/dev/input") / late.name();
    std::filesystem::permissions(node, std::filesystem::perms::owner_read);
    const int before = refused;
    {
        const AsNobody nobody;
        ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return refused > before; }));
    }
    EXPECT_EQ(openNow.size(), 1U);
    // The group's right alone would not do for others, nor theirs for the group.
    using std::filesystem::perms;
    std::filesystem::permissions(node, perms::owner_read | perms::group_read | perms::others_read);
    {
        const AsNobody nobody;
        ASSERT_TRUE(waitUntilOpen(2));
    }
    ASSERT_TRUE(holdChord(late));
    EXPECT_THAT(heard, ElementsAre(control, chord));
}

TEST_F(EvdevKernel, DeviceThatIsTakenAwayLeavesNoTapAndComesBackWithoutWhatWasHeld) {
    const auto& keyboard = plug();
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    ASSERT_EQ(ioctl(*openNow.begin(), EVIOCREVOKE, nullptr), 0);
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control, chord, press, 0));
    EXPECT_THAT(openNow, IsEmpty());
    heard.clear();
    session->set(false);
    session->set(true);
    EXPECT_EQ(openNow.size(), 1U);
    keyboard.release(KEY_LEFTCTRL);
    keyboard.release(KEY_LEFTALT);
    ASSERT_TRUE(holdChord(keyboard));
    EXPECT_THAT(heard, ElementsAre(control, chord));
}

TEST_F(EvdevKernel, AnotherSessionOnTheScreenIsNoPressAndItsKeysAreNotRead) {
    const auto& keyboard = plug();
    ASSERT_TRUE(start());
    ASSERT_TRUE(holdChord(keyboard));
    session->set(false);
    EXPECT_THAT(heard, ElementsAre(control, chord, press, 0));
    EXPECT_THAT(openNow, IsEmpty());
    session->set(true);
    keyboard.release(KEY_LEFTALT);
    keyboard.press(KEY_LEFTALT);
    ASSERT_TRUE(waitFor(5));
    EXPECT_EQ(heard.back(), option) << "Ctrl has been down all the time";
}

} // namespace kelo
