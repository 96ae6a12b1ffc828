#include "component/input/InputFixture.h"

#include "linux/window/WindowIdentity.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <vector>

namespace kelo::tests {

using Changes = std::vector<Seen>;

class Focus : public InputFixture {
protected:
    void SetUp() override { watch(); }
    Changes tapped() {
        keyboard.tap(XK_Control_L);
        return seen();
    }
    static Changes of(bool global) { return {{global, control}, {global, 0}}; }
};

TEST_F(Focus, OfAnotherProgramSendsChangesToGlobalMonitorsOnly) {
    OwnWindow ours;
    focusOther();
    EXPECT_EQ(tapped(), of(true));
}

TEST_F(Focus, OfAWindowOfOursSendsChangesToLocalMonitorsOnly) {
    OwnWindow ours;
    focusOurs(ours);
    EXPECT_EQ(tapped(), of(false));
    focusOther();
    EXPECT_EQ(tapped(), of(true));
}

TEST_F(Focus, OfAWindowPastTheWindowManagerIsOurs) {
    OwnWindow panel(true);
    focusOther();
    keyboard.forceFocus(panel.identifier());
    EXPECT_EQ(tapped(), of(false));
}

TEST_F(Focus, OfNothingIsNotOurs) {
    if (XKeyboard::hasManager())
        GTEST_SKIP() << "a window manager gives the keyboard to something at once";
    OwnWindow ours;
    keyboard.focusNothing();
    EXPECT_EQ(tapped(), of(true));
}

TEST_F(Focus, ThatFollowsThePointerIsTheWindowsUnderIt) {
    if (XKeyboard::hasManager())
        GTEST_SKIP() << "a window manager gives the keyboard to something at once";
    OwnWindow panel(true);
    keyboard.moveTo(5, 5);
    keyboard.forceFocus(PointerRoot);
    EXPECT_EQ(tapped(), of(false));
    keyboard.moveTo(1270, 1010);
    EXPECT_EQ(tapped(), of(true));
}

TEST_F(Focus, ThatMovesWhileTheChordIsHeldSendsTheReleaseToTheNewOwner) {
    OwnWindow panel(true);
    focusOther();
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Alt_L);
    const Changes pressed{{true, control}, {true, control | option}};
    EXPECT_EQ(seenSoFar(2), pressed);
    keyboard.forceFocus(panel.identifier());
    keyboard.up(XK_Alt_L);
    keyboard.up(XK_Control_L);
    const Changes released{{false, control}, {false, 0}};
    EXPECT_EQ(seen(), released);
}

TEST_F(Focus, TellsWhichWindowOfOursAChangeIsAddressedTo) {
    struct Known final : platform::Window {};
    const auto identity = std::make_shared<Known>();
    std::shared_ptr<const platform::Window> told;
    monitors.addLocalMonitor(platform::event_mask::flagsChanged,
                             [&told](const platform::EventPointer& event) {
                                 told = event->window;
                                 return event;
                             });
    OwnWindow ours;
    window::setWindowIdentity(ours.window(), identity);
    focusOurs(ours);
    EXPECT_EQ(tapped(), of(false));
    EXPECT_EQ(told, identity);
}

} // namespace kelo::tests
