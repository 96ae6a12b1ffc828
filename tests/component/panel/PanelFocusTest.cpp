#include "component/panel/AnnouncedDesktop.h"
#include "component/panel/PanelFixture.h"
#include "linux/session/X11LockScreen.h"

#include <gdk/x11/gdkx.h>

#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <algorithm>
#include <utility>

namespace kelo::test {

namespace {

/// Who has the keyboard while the panel comes and goes.
class PanelFocusTest : public PanelFixture {
protected:
    static GtkWindow* windowOf(FakeContent& content) {
        return GTK_WINDOW(gtk_widget_get_root(content.widget()));
    }
    /// Whether toolkit and page are told that the panel has the keyboard.
    bool countsAsActive() const {
        const auto state = windows.numbers(panelWindow(), "_NET_WM_STATE");
        return std::find(state.begin(), state.end(), connection.atom("_NET_WM_STATE_FOCUSED")) !=
               state.end();
    }
};

TEST_F(PanelFocusTest, TakesTheKeyboardAndGivesItBackEachTime) {
    screen::OtherProgram other;
    settle(other);
    typeInto(other, "before");
    for (const std::string text : {"first", "second"}) {
        show();
        typeIntoPanel(text);
        hide();
        until("the other program has the keyboard again",
              [&] { return windows.focused() == other.window(); });
        typeInto(other, text);
    }
}

TEST_F(PanelFocusTest, CountsAsActiveOnlyWhileItHasTheKeyboard) {
    screen::OtherProgram other;
    settle(other);
    for (int round = 0; round < 2; ++round) {
        show();
        until("the caret blinks", [&] { return content->hasCaret(); });
        other.takeKeyboard();
        until("the caret is gone", [&] { return !content->hasCaret(); });
        hide();
    }
}

TEST_F(PanelFocusTest, AMenuOfAnotherProgramLeavesItActive) {
    if (manager() == "mutter")
        GTEST_SKIP() << "this one takes what we say of our window off it again";
    screen::OtherProgram other;
    settle(other);
    show();
    until("the panel is active", [this] { return countsAsActive(); });
    other.grabKeyboard();
    digest();
    EXPECT_TRUE(countsAsActive());
    other.releaseKeyboard();
    digest();
    EXPECT_TRUE(countsAsActive());
    EXPECT_EQ(windows.focused(), panelWindow());
}

TEST_F(PanelFocusTest, OnceHiddenItIsActiveNoMoreAlsoUnderThePointer) {
    if (hasManager())
        GTEST_SKIP() << "with a window manager, the keyboard does not follow the pointer";
    pointer.moveTo({box().x + 100, box().y + 100});
    AnnouncedDesktop desktop;
    desktop.focus(AnnouncedDesktop::followsPointer);
    show();
    until("the panel is active", [this] { return countsAsActive(); });
    hide();
    digest();
    EXPECT_FALSE(countsAsActive());
}

TEST_F(PanelFocusTest, AHeldEscapeDoesNotReachTheProgramBehind) {
    screen::OtherProgram other;
    settle(other);
    show();
    keyboard.down(XK_Escape);
    connection.sync();
    hide();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
    keyboard.press(XK_a);
    keyboard.up(XK_Escape);
    connection.sync();
    digest();
    typeInto(other, "b");
    EXPECT_EQ(other.typed(), "b");
}

TEST_F(PanelFocusTest, AnEscapeHeldInAnotherProgramStaysWithIt) {
    screen::OtherProgram other;
    settle(other);
    show();
    other.takeKeyboard();
    until("the other program has the keyboard",
          [&] { return windows.focused() == other.window(); });
    keyboard.down(XK_Escape);
    connection.sync();
    hide();
    keyboard.press(XK_a);
    connection.sync();
    until("the other program gets its keys", [&] {
        other.listen();
        return other.typed().ends_with("a");
    });
    keyboard.up(XK_Escape);
    connection.sync();
}

TEST_F(PanelFocusTest, AHeldEscapeIsTakenForNoLockScreen) {
    screen::OtherProgram other;
    settle(other);
    show();
    keyboard.down(XK_Escape);
    connection.sync();
    hide();
    session::X11LockScreen lockScreen(gdk_display_get_default());
    EXPECT_FALSE(lockScreen.isKeyboardGrabbed());
    keyboard.up(XK_Escape);
    connection.sync();
    // Whoever else asks meets the grab, until the key has been released.
    until("the keyboard is free again", [this] {
        digest();
        if (XGrabKeyboard(connection.display(), connection.root(), False, GrabModeAsync,
                          GrabModeAsync, CurrentTime) != GrabSuccess)
            return false;
        XUngrabKeyboard(connection.display(), CurrentTime);
        connection.sync();
        return true;
    });
}

TEST_F(PanelFocusTest, AnEscapeThatNobodyReleasesIsKeptForTwoSecondsAtMost) {
    screen::OtherProgram other;
    settle(other);
    show();
    keyboard.down(XK_Escape);
    connection.sync();
    hide();
    until("the other program gets its keys again", [&] {
        keyboard.press(XK_a);
        connection.sync();
        other.listen();
        return !other.typed().empty();
    });
    keyboard.up(XK_Escape);
    connection.sync();
}

TEST_F(PanelFocusTest, LeavesTheKeyboardToWhoeverTookItLater) {
    screen::OtherProgram first;
    settle(first);
    show();
    screen::OtherProgram second({600, 60, 200, 40});
    settle(second);
    second.takeKeyboard();
    until("the second has the keyboard", [&] { return windows.focused() == second.window(); });
    hide();
    EXPECT_EQ(windows.focused(), second.window());
    typeInto(second, "mine");
}

TEST_F(PanelFocusTest, GivesTheKeyboardBackToWhoeverTookItInBetween) {
    screen::OtherProgram first;
    settle(first);
    show();
    screen::OtherProgram second({600, 60, 200, 40});
    settle(second);
    show();
    typeIntoPanel("mine again");
    hide();
    until("the second has the keyboard", [&] { return windows.focused() == second.window(); });
    typeInto(second, "back");
}

TEST_F(PanelFocusTest, TakesTheKeyboardBackFromNobodyButNotWithoutEnd) {
    screen::OtherProgram other;
    settle(other);
    const screen::OtherProgram outside({-100, -100, 1, 1}, screen::OtherProgram::Kind::unmanaged);
    until("there is a window outside the screen",
          [&] { return windows.describe(outside.window()).isMapped; });
    show();
    const auto giveTo = [this](screen::WindowId window) {
        XSetInputFocus(connection.display(), window, RevertToNone, CurrentTime);
        connection.sync();
    };
    for (int time = 0; time < 3; ++time) {
        // A manager may have an answer of its own to a keyboard that follows the pointer.
        const bool followsPointer = time == 1 && !hasManager();
        giveTo(followsPointer ? screen::WindowId(PointerRoot) : outside.window());
        until("the panel has the keyboard again",
              [this] { return windows.focused() == panelWindow(); });
    }
    until("the panel is active", [this] { return manager() == "mutter" || countsAsActive(); });
    giveTo(outside.window());
    until("the panel knows that it has lost the keyboard", [this] {
        digest();
        return !content->hasCaret();
    });
    EXPECT_EQ(windows.focused(), outside.window());
    hide();
    other.takeKeyboard();
    show();
    giveTo(outside.window());
    until("the next show may take it back", [this] { return windows.focused() == panelWindow(); });
    hide();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
}

TEST_F(PanelFocusTest, GivesTheKeyboardToSomebodyWhenItsEarlierOwnerIsGone) {
    screen::OtherProgram stays;
    settle(stays);
    {
        screen::OtherProgram goes({600, 60, 200, 40});
        settle(goes);
        goes.takeKeyboard();
        until("it has the keyboard", [&] { return windows.focused() == goes.window(); });
        show();
    }
    until("the window is gone", [&] { return windows.managed().size() <= 1; });
    hide();
    // Without a manager, whoever the pointer is over gets the keys.
    if (!hasManager())
        pointer.moveTo({stays.place().x + 5, stays.place().y + 5});
    else
        until("the other program has the keyboard",
              [&] { return windows.focused() == stays.window(); });
    typeInto(stays, "heir");
}

TEST_F(PanelFocusTest, WithoutTheRightToTheKeyboardNeverTakesIt) {
    auto description = voicePanel();
    description.canBecomeKeyWindow = false;
    panel = panels.makePanel(description);
    panel->setContentView({content, 18, 18, true});
    panel->setFrameOrigin({320, 120});
    screen::OtherProgram other;
    settle(other);
    panel->makeKeyAndOrderFront();
    until("the panel is drawn", [this] { return contentAt(box().x + 20, box().y + 300); });
    pointer.click({box().x + 100, box().y + 100});
    typeInto(other, "still mine");
    EXPECT_EQ(windows.focused(), other.window());
}

TEST_F(PanelFocusTest, TheFirstResponderGetsTheKeys) {
    panel->makeKeyAndOrderFront();
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    gtk_window_set_focus(windowOf(*content), nullptr);
    EXPECT_FALSE(content->hasCaret());
    panel->makeFirstResponder(content);
    until("the caret blinks", [this] { return content->hasCaret(); });
    typeIntoPanel("here");
}

TEST_F(PanelFocusTest, IgnoresAFirstResponderThatIsNotInside) {
    const auto elsewhere = std::make_shared<FakeContent>();
    const auto another = panels.makePanel(voicePanel());
    another->setContentView({elsewhere, 18, 18, true});
    gtk_window_set_focus(windowOf(*elsewhere), nullptr);
    show();
    panel->makeFirstResponder(elsewhere);
    EXPECT_EQ(gtk_window_get_focus(windowOf(*elsewhere)), nullptr);
    panel->makeFirstResponder(std::make_shared<FakeContent>());
    panel->makeFirstResponder(nullptr);
    typeIntoPanel("still here");
}

} // namespace

} // namespace kelo::test
