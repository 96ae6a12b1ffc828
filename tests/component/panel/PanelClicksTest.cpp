#include "component/gobject/LoopClock.h"
#include "component/panel/PanelFixture.h"
#include "linux/gobject/SignalHandler.h"

#include <gdk/x11/gdkx.h>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <utility>

namespace kelo::test {

namespace {

/// Longer than the panel lets the window manager act on a click.
constexpr std::chrono::milliseconds afterItsTurn{300};

/// Who has the keyboard after a click while the panel is shown.
class PanelClicksTest : public PanelFixture {
protected:
    PanelClicksTest() {
        const auto count = +[](GdkDisplay*, const XEvent* event, int* heard) -> gboolean {
            if (event->type == GenericEvent && event->xcookie.evtype == XI_RawButtonPress)
                ++*heard;
            return FALSE;
        };
        events = gobject::connectSignal(gdk_display_get_default(), "xevent", count, &heard);
    }
    /// How many mouse presses anywhere the program has been told of since the last call.
    int clicksHeard() {
        digest();
        return std::exchange(heard, 0);
    }

    int heard = 0;
    gobject::SignalConnection events;
};

TEST_F(PanelClicksTest, AClickBringsTheKeyboardBack) {
    screen::OtherProgram other;
    settle(other);
    show();
    const auto place = windows.describe(other.window()).origin;
    pointer.click({place.x + 20, place.y + 20});
    // Not every manager gives the keyboard on a click into a window that it is still placing.
    giveKeyboardTo(other);
    EXPECT_TRUE(panel->isVisible());
    typeInto(other, "outside");
    pointer.click({box().x + 100, box().y + 100});
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    typeIntoPanel("inside");
    hide();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
}

TEST_F(PanelClicksTest, AnyButtonAnywhereInItBringsTheKeyboardBack) {
    screen::OtherProgram other;
    settle(other);
    show();
    const Box at = box();
    const screen::Point entry{at.x + at.width / 2, at.y + at.height / 2};
    const screen::Point page{at.x + 100, at.y + 100};
    for (const auto& [place, button] :
         {std::pair(entry, 1U), std::pair(page, 2U), std::pair(page, 3U)}) {
        other.takeKeyboard();
        until("the other program has the keyboard",
              [&] { return windows.focused() == other.window(); });
        pointer.click(place, button);
        until("button " + std::to_string(button) + " brings the keyboard back",
              [this] { return windows.focused() == panelWindow(); });
    }
}

TEST_F(PanelClicksTest, AClickOutsideGivesTheKeyboardBack) {
    screen::OtherProgram other;
    settle(other);
    for (const unsigned button : {1U, 3U}) {
        show();
        const auto place = windows.describe(other.window()).origin;
        pointer.click({place.x + 20, place.y + 20}, button);
        until("the other program has the keyboard again",
              [&] { return windows.focused() == other.window(); });
        EXPECT_TRUE(panel->isVisible());
        typeInto(other, "secret");
        EXPECT_EQ(content->typed(), "");
        picture("clicked-outside");
        hide();
        EXPECT_EQ(windows.focused(), other.window());
    }
}

TEST_F(PanelClicksTest, TheWheelOutsideLeavesTheKeyboardInThePanel) {
    if (hasManager())
        GTEST_SKIP() << "some window managers give the keyboard to the window below the wheel";
    screen::OtherProgram other;
    settle(other);
    show();
    const auto place = windows.describe(other.window()).origin;
    pointer.click({place.x + 20, place.y + 20}, 5);
    until("the wheel is heard", [this] { return clicksHeard() > 0; });
    ASSERT_TRUE(passOn(loop, afterItsTurn));
    EXPECT_EQ(windows.focused(), panelWindow());
    typeIntoPanel("still here");
}

TEST_F(PanelClicksTest, AClickIntoAThirdProgramGivesItTheKeyboard) {
    if (!hasManager() || manager() == "dwm")
        GTEST_SKIP() << "only a window manager gives the keyboard to the window that is clicked";
    screen::OtherProgram second({900, 40, 200, 100});
    settle(second);
    screen::OtherProgram first;
    settle(first);
    show();
    const auto place = windows.describe(second.window()).origin;
    pointer.click({place.x + 20, place.y + 20});
    until("the second has the keyboard", [&] { return windows.focused() == second.window(); });
    typeInto(second, "mine");
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(PanelClicksTest, AShowAfterAClickOutsideKeepsTheKeyboard) {
    if (hasManager())
        GTEST_SKIP() << "a window manager gives the keyboard to the window that is clicked";
    screen::OtherProgram other;
    settle(other);
    const auto place = windows.describe(other.window()).origin;
    for (const bool hiddenInBetween : {false, true}) {
        show();
        pointer.click({place.x + 20, place.y + 20});
        until("the click is heard", [this] { return clicksHeard() > 0; });
        if (hiddenInBetween)
            panel->orderOut();
        panel->makeKeyAndOrderFront();
        ASSERT_TRUE(passOn(loop, afterItsTurn));
        EXPECT_EQ(windows.focused(), panelWindow());
        hide();
        other.takeKeyboard();
    }
}

TEST_F(PanelClicksTest, AClickIntoThePanelLeavesTheKeyboardThere) {
    screen::OtherProgram other;
    settle(other);
    show();
    pointer.click({box().x + 100, box().y + 100});
    until("the click is heard", [this] { return clicksHeard() > 0; });
    ASSERT_TRUE(passOn(loop, afterItsTurn));
    EXPECT_EQ(windows.focused(), panelWindow());
}

TEST_F(PanelClicksTest, AClickOnTheDesktopMayLeaveTheKeyboardToNobody) {
    if (hasManager())
        GTEST_SKIP() << "a window manager decides itself who gets the keyboard";
    const screen::OtherProgram outside({-100, -100, 1, 1}, screen::OtherProgram::Kind::unmanaged);
    until("there is a window outside the screen",
          [&] { return windows.describe(outside.window()).isMapped; });
    show();
    pointer.click({5, 5});
    until("the click is heard", [this] { return clicksHeard() > 0; });
    XSetInputFocus(connection.display(), outside.window(), RevertToNone, CurrentTime);
    connection.sync();
    ASSERT_TRUE(passOn(loop, afterItsTurn));
    EXPECT_EQ(windows.focused(), outside.window());
}

TEST_F(PanelClicksTest, HiddenItDoesNotListenToClicks) {
    screen::OtherProgram other;
    settle(other);
    const auto place = windows.describe(other.window()).origin;
    show();
    pointer.click({place.x + 20, place.y + 20});
    until("the click is heard", [this] { return clicksHeard() > 0; });
    hide();
    clicksHeard();
    pointer.click({place.x + 20, place.y + 20});
    connection.sync();
    EXPECT_EQ(clicksHeard(), 0);
}

} // namespace

} // namespace kelo::test
