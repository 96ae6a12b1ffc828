#include "component/input/InputFixture.h"
#include "linux/input/xkb/XkbModifierSource.h"

#include <X11/keysym.h>

#include <vector>

namespace kelo::tests {

using Changes = std::vector<Seen>;

namespace {

constexpr Flags chord = control | option;
/// Stands for another press in the list of what was seen. No modifier has this bit.
constexpr Flags press = Flags{1} << 60;

// The keys by their place on a PC keyboard.
constexpr unsigned leftAlt = 64;
constexpr unsigned rightAlt = 108;
constexpr unsigned altGr = 92;

} // namespace

/// Keys and buttons that are pressed while the chord is down.
class OtherPress : public InputFixture {
protected:
    void SetUp() override {
        watch();
        ASSERT_TRUE(monitors.addGlobalMonitor(
            platform::event_mask::otherPress, [this](const platform::Event& event) {
                log.push_back({true, press | event.modifierFlags});
                codes.push_back(event.keyCode);
            }));
        ASSERT_TRUE(monitors.addLocalMonitor(platform::event_mask::otherPress,
                                             [this](const platform::EventPointer& event) {
                                                 log.push_back({false, press});
                                                 return event;
                                             }));
        focusOther();
    }
    ~OtherPress() override { run("setxkbmap -layout us -option ''"); }

    /// The chord goes down, and the program has time to learn of each key.
    void pressChord() {
        keyboard.down(XK_Control_L);
        seenSoFar(1);
        keyboard.key(leftAlt, true);
        seenSoFar(1);
    }
    void releaseChord() {
        keyboard.key(leftAlt, false);
        keyboard.up(XK_Control_L);
    }
    static Changes released(bool global = true) { return {{global, control}, {global, 0}}; }
    static Changes pressThenReleased(bool global = true) {
        return {{global, press}, {global, control}, {global, 0}};
    }

    std::vector<platform::KeyCode> codes;
};

TEST_F(OtherPress, OfAKeyIsToldOnceWithoutTheKeyWhileItRepeats) {
    pressChord();
    keyboard.down(XK_t);
    until("the key repeats", [this] { return keyboard.pressesInOther() > 6; });
    keyboard.up(XK_t);
    releaseChord();
    EXPECT_EQ(seen(), pressThenReleased());
    EXPECT_EQ(codes, std::vector<platform::KeyCode>{platform::key::other});
}

TEST_F(OtherPress, OfEachKeyOfADesktopsShortcutsIsTold) {
    for (const unsigned symbol : {XK_l, XK_Left, XK_F1, XK_Delete, XK_Escape, XK_space, XK_KP_0}) {
        pressChord();
        keyboard.tap(symbol);
        releaseChord();
        EXPECT_EQ(seen(), pressThenReleased()) << symbol;
    }
}

TEST_F(OtherPress, OfAMouseButtonAndOfTheWheelIsTold) {
    // Beside all windows. A window manager that moves a window holds the pointer for a while.
    keyboard.moveTo(5, 1000);
    for (const unsigned button : {1u, 2u, 3u, 4u, 5u}) {
        pressChord();
        keyboard.click(button);
        releaseChord();
        EXPECT_EQ(seen(), pressThenReleased()) << button;
    }
}

TEST_F(OtherPress, OfAWholeShortcutAtOnceIsTold) {
    for (int time = 0; time < 20; ++time) {
        keyboard.down(XK_Control_L);
        keyboard.key(leftAlt, true);
        keyboard.down(XK_t);
        const Changes all{{true, control}, {true, chord}, {true, press}};
        EXPECT_EQ(seenSoFar(3), all);
        keyboard.up(XK_t);
        releaseChord();
        EXPECT_EQ(seen(), released());
    }
}

TEST_F(OtherPress, BeforeTheChordDoesNotCount) {
    keyboard.tap(XK_t);
    keyboard.down(XK_Control_L);
    seenSoFar(1);
    keyboard.down(XK_t);
    keyboard.key(leftAlt, true);
    seenSoFar(1);
    keyboard.up(XK_t);
    releaseChord();
    EXPECT_EQ(seen(), released());

    keyboard.down(XK_t);
    keyboard.down(XK_Control_L);
    seenSoFar(1);
    keyboard.key(leftAlt, true);
    seenSoFar(1);
    keyboard.up(XK_t);
    releaseChord();
    EXPECT_EQ(seen(), released());
}

TEST_F(OtherPress, IsNoneOfModifierKeys) {
    for (const unsigned symbol : {XK_Shift_L, XK_Shift_R, XK_Super_R, XK_Num_Lock, XK_Alt_R}) {
        pressChord();
        keyboard.tap(symbol);
        releaseChord();
        for (const Seen& each : seen())
            EXPECT_FALSE(each.flags & press) << symbol;
    }
}

TEST_F(OtherPress, IsNoneOfAKeyThatWasMadeAModifier) {
    ASSERT_TRUE(run("xmodmap -e 'add mod3 = F12'"));
    pressChord();
    keyboard.tap(XK_F12);
    releaseChord();
    EXPECT_EQ(seen(), released());
}

TEST_F(OtherPress, IsNotAltGrOnAnyLayout) {
    for (const auto* const layout : {"de", "us,de", "us,us -variant ,intl", "ara,us"}) {
        ASSERT_TRUE(run(std::string("setxkbmap -option '' -layout ") + layout));
        for (const int group : {0, 1}) {
            keyboard.lockGroup(group);
            pressChord();
            for (const unsigned key : {rightAlt, altGr}) {
                keyboard.key(key, true);
                keyboard.key(key, false);
            }
            releaseChord();
            EXPECT_EQ(seen(), released()) << layout << " " << group;
        }
        keyboard.lockGroup(0);
    }
}

TEST_F(OtherPress, IsToldWhileAnotherProgramHasGrabbedTheKeyboard) {
    keyboard.grab();
    pressChord();
    keyboard.tap(XK_t);
    releaseChord();
    EXPECT_EQ(seen(), pressThenReleased());
    keyboard.ungrab();
}

TEST_F(OtherPress, ReachesTheProgramThatItIsMeantFor) {
    pressChord();
    const int before = keyboard.pressesInOther();
    keyboard.tap(XK_t);
    EXPECT_EQ(keyboard.pressesInOther(), before + 1);
    releaseChord();
    EXPECT_EQ(seen(), pressThenReleased());
}

TEST_F(OtherPress, InAWindowOfOursIsToldThere) {
    OwnWindow ours;
    focusOurs(ours);
    pressChord();
    keyboard.tap(XK_t);
    releaseChord();
    EXPECT_EQ(seen(), pressThenReleased(false));
}

TEST_F(OtherPress, IsToldForEachPressOfTheChord) {
    for (int time = 0; time < 3; ++time) {
        pressChord();
        keyboard.tap(XK_t);
        keyboard.tap(XK_u);
        releaseChord();
        const Changes both{{true, press}, {true, press}, {true, control}, {true, 0}};
        EXPECT_EQ(seen(), both);
    }
}

TEST_F(OtherPress, IsNotAskedOfTheServerWhileNeitherKeyOfTheChordIsDown) {
    int presses = 0;
    Flags flags = 0;
    input::XkbModifierSource source;
    source.onOtherPress([&presses] { ++presses; });
    ASSERT_TRUE(source.start([&flags](Flags now) { flags = now; }));
    const auto typeWith = [&](unsigned modifier, Flags flag) {
        keyboard.down(modifier);
        until("the modifier is seen", [&] { return flags == flag; });
        keyboard.tap(XK_a);
        keyboard.up(modifier);
        until("its release is seen", [&] { return flags == 0; });
        return std::exchange(presses, 0);
    };
    keyboard.tap(XK_a);
    keyboard.click(1);
    EXPECT_EQ(typeWith(XK_Shift_L, shift), 0);
    EXPECT_EQ(typeWith(XK_Super_L, command), 0);
    for (const auto& [modifier, flag] : {std::pair(XK_Control_L, control), {XK_Alt_L, option}}) {
        EXPECT_EQ(typeWith(static_cast<unsigned>(modifier), flag), 1);
        // The server takes the requests of two programs in any order.
        until("the server has stopped", [&] { return typeWith(XK_Shift_L, shift) == 0; });
    }
}

} // namespace kelo::tests
