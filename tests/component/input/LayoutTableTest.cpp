#include "component/input/XKeyboard.h"
#include "linux/input/xkb/XkbModifierMap.h"

#include <gtest/gtest.h>

// Xlib's macros hide names of the test library's, so they come after it.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

// Which keys are Option on the layouts that people have, as the X server itself compiles them.

namespace kelo::tests {

namespace {

using platform::ModifierFlags;
using platform::modifier::option;

// The keys by their place on a PC keyboard.
constexpr unsigned leftAlt = 64;
constexpr unsigned rightAlt = 108;
/// No PC has this one. The X server always binds AltGr to it.
constexpr unsigned altGr = 92;

/// All layouts that the machine's keyboard rules name. "custom" is the user's own file, which is
/// not there by default.
std::vector<std::string> layoutsOfTheRules() {
    std::vector<std::string> layouts;
    std::ifstream rules("/usr/share/X11/xkb/rules/evdev.lst");
    bool inLayouts = false;
    for (std::string line; std::getline(rules, line);) {
        if (line.starts_with('!'))
            inLayouts = line.starts_with("! layout");
        else if (const auto from = line.find_first_not_of(' ');
                 inLayouts && from != std::string::npos)
            layouts.push_back(line.substr(from, line.find(' ', from) - from));
    }
    std::erase(layouts, "custom");
    return layouts;
}

} // namespace

class LayoutTable : public testing::Test {
protected:
    LayoutTable() : display(XOpenDisplay(nullptr), XCloseDisplay) {}
    ~LayoutTable() override { run("setxkbmap -layout us -variant '' -option ''"); }

    void choose(const std::string& arguments) {
        // A very busy server now and then refuses a description that it takes the next time.
        const std::string command = "setxkbmap -option '' " + arguments;
        ASSERT_TRUE(run(command) || run(command) || run(command));
        map = input::readXkbModifierMap(display.get());
    }

    int groups() {
        const std::unique_ptr<XkbDescRec, void (*)(XkbDescPtr)> keys(
            XkbGetMap(display.get(), XkbKeySymsMask, XkbUseCoreKbd),
            [](XkbDescPtr each) { XkbFreeKeyboard(each, 0, True); });
        int most = 1;
        for (int key = keys->min_key_code; key <= keys->max_key_code; ++key)
            most = std::max(most, static_cast<int>(XkbKeyNumGroups(keys.get(), key)));
        return most;
    }

    /// What a key stands for in the active group.
    KeySym symbolOf(unsigned key) {
        XkbStateRec state{};
        XkbGetState(display.get(), XkbUseCoreKbd, &state);
        KeySym symbol = NoSymbol;
        unsigned used = 0;
        XkbLookupKeySym(display.get(), static_cast<KeyCode>(key), XkbBuildCoreState(0, state.group),
                        &used, &symbol);
        return symbol;
    }
    /// The seam's flags while the key is down.
    ModifierFlags flagsOf(unsigned key) {
        keyboard.key(key, true);
        XkbStateRec state{};
        XkbGetState(display.get(), XkbUseCoreKbd, &state);
        keyboard.key(key, false);
        return map.flags(state.mods);
    }

    /// The left Alt key is Option in each group. The right one is, wherever it is an Alt key.
    void expectAltKeysAreOption() {
        for (int group = 0, count = groups(); group < count; ++group) {
            SCOPED_TRACE("group " + std::to_string(group + 1));
            keyboard.lockGroup(group);
            EXPECT_EQ(flagsOf(leftAlt), option);
            const KeySym right = symbolOf(rightAlt);
            EXPECT_EQ(flagsOf(rightAlt), right == XK_Alt_R || right == XK_Alt_L ? option : 0)
                << XKeysymToString(right);
        }
        keyboard.lockGroup(0);
    }

    std::unique_ptr<Display, int (*)(Display*)> display;
    XKeyboard keyboard;
    input::XkbModifierMap map;
};

TEST_F(LayoutTable, TwoLayoutsOfWhichOneHasAltGrKeepOption) {
    choose("-layout us,de");
    keyboard.lockGroup(0);
    EXPECT_EQ(symbolOf(rightAlt), KeySym{XK_Alt_R});
    keyboard.lockGroup(1);
    EXPECT_EQ(symbolOf(rightAlt), KeySym{XK_ISO_Level3_Shift});
    expectAltKeysAreOption();
}

TEST_F(LayoutTable, TwoVariantsOfOneLayoutKeepOption) {
    choose("-layout us,us -variant ,intl");
    keyboard.lockGroup(1);
    EXPECT_EQ(symbolOf(rightAlt), KeySym{XK_ISO_Level3_Shift});
    expectAltKeysAreOption();
}

TEST_F(LayoutTable, EveryLayoutAloneHasOption) {
    for (const std::string& layout : layoutsOfTheRules()) {
        SCOPED_TRACE(layout);
        choose("-layout " + layout);
        expectAltKeysAreOption();
    }
}

TEST_F(LayoutTable, EveryLayoutBehindUsHasOption) {
    for (const std::string& layout : layoutsOfTheRules()) {
        SCOPED_TRACE("us," + layout);
        choose("-layout us," + layout);
        expectAltKeysAreOption();
    }
}

TEST_F(LayoutTable, EveryLayoutBeforeUsHasOption) {
    for (const std::string& layout : layoutsOfTheRules()) {
        SCOPED_TRACE(layout + ",us");
        choose("-layout " + layout + ",us");
        expectAltKeysAreOption();
    }
}

TEST_F(LayoutTable, AModifierThatAltSharesWithAltGrIsNotOption) {
    choose("-layout us");
    ASSERT_TRUE(run("xmodmap -e 'remove mod1 = Alt_R' -e 'add mod5 = Alt_R'"));
    map = input::readXkbModifierMap(display.get());
    ASSERT_EQ(symbolOf(altGr), KeySym{XK_ISO_Level3_Shift});
    EXPECT_EQ(flagsOf(altGr), 0u);
    EXPECT_EQ(flagsOf(rightAlt), 0u);
    EXPECT_EQ(flagsOf(leftAlt), option);
}

TEST_F(LayoutTable, NumLockOnTheModifierOfAltIsNotOption) {
    choose("-layout us");
    ASSERT_TRUE(run("xmodmap -e 'clear mod2' -e 'add mod1 = Num_Lock'"));
    map = input::readXkbModifierMap(display.get());
    EXPECT_EQ(map.option, 0u);
}

TEST_F(LayoutTable, HasTheLayoutsOfTheMachine) {
    const auto layouts = layoutsOfTheRules();
    EXPECT_GT(layouts.size(), 50u);
    EXPECT_TRUE(std::ranges::count(layouts, "de"));
}

} // namespace kelo::tests
