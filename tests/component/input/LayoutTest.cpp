#include "component/input/InputFixture.h"

#include <X11/keysym.h>

#include <vector>

namespace kelo::tests {

using Changes = std::vector<Seen>;

namespace {

// The keys by their place on a PC keyboard.
constexpr unsigned leftControl = 37;
constexpr unsigned leftAlt = 64;
constexpr unsigned leftWindows = 133;
constexpr unsigned rightAlt = 108;

} // namespace

/// The layout changes while the keyboard is watched.
class Layout : public InputFixture {
protected:
    void SetUp() override {
        watch();
        focusOther();
    }
    ~Layout() override { run("setxkbmap -layout us -option ''"); }

    void choose(const std::string& options) { ASSERT_TRUE(run("setxkbmap " + options)); }
    Changes pressed(unsigned code) {
        keyboard.key(code, true);
        keyboard.key(code, false);
        until("the key is seen", [this] { return log.size() >= 2; });
        return std::exchange(log, {});
    }
    static Changes of(Flags flags) { return {{true, flags}, {true, 0}}; }
};

TEST_F(Layout, AltGrIsNotOption) {
    choose("-layout de");
    keyboard.key(rightAlt, true);
    keyboard.key(rightAlt, false);
    EXPECT_EQ(seen(), Changes{});
    EXPECT_EQ(pressed(leftAlt), of(option));
}

TEST_F(Layout, TheRightAltIsOptionWhereItIsNotAltGr) {
    choose("-layout us");
    EXPECT_EQ(pressed(rightAlt), of(option));
}

TEST_F(Layout, ASecondLayoutWithAltGrTakesNeitherAltKeyAway) {
    choose("-layout us,de");
    EXPECT_EQ(pressed(leftAlt), of(option));
    EXPECT_EQ(pressed(rightAlt), of(option));
}

TEST_F(Layout, OptionGoesWhereAltIsSwappedTo) {
    choose("-layout us -option altwin:swap_alt_win");
    EXPECT_EQ(pressed(leftWindows), of(option));
    EXPECT_EQ(pressed(leftAlt), of(command));
}

TEST_F(Layout, ControlAndAltMayBeSwapped) {
    choose("-layout us -option ctrl:swap_lalt_lctl");
    EXPECT_EQ(pressed(leftControl), of(option));
    EXPECT_EQ(pressed(leftAlt), of(control));
}

TEST_F(Layout, OptionIsWhateverModifierAltIsBoundTo) {
    ASSERT_TRUE(run("xmodmap -e 'clear mod1' -e 'clear mod3' -e 'add mod3 = Alt_L Alt_R'"));
    EXPECT_EQ(pressed(leftAlt), of(option));
}

TEST_F(Layout, WithoutAnAltKeyThereIsNoOption) {
    choose("-layout us -option altwin:swap_alt_win");
    ASSERT_TRUE(run("xmodmap -e 'clear mod1'"));
    keyboard.key(leftWindows, true);
    keyboard.key(leftWindows, false);
    keyboard.down(XK_Control_L);
    keyboard.up(XK_Control_L);
    until("a later key is seen", [this] { return log.size() >= 2; });
    EXPECT_EQ(std::exchange(log, {}), of(control));
}

} // namespace kelo::tests
