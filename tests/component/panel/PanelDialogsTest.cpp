#include "component/panel/PanelFixture.h"

#include <gdk/x11/gdkx.h>

#include <algorithm>
#include <optional>

namespace kelo::test {

namespace {

/// A dialog of our own, which covers the panel if it is in front.
class Dialog {
public:
    Dialog() : window(gobject::GObjectPointer<GtkWindow>::share(GTK_WINDOW(gtk_window_new()))) {
        gtk_window_set_modal(window.get(), TRUE);
        gtk_window_set_default_size(window.get(), 1000, 800);
        gtk_window_present(window.get());
    }
    ~Dialog() { close(); }
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    void close() { gtk_window_destroy(window.get()); }
    bool isActive() const { return gtk_window_is_active(window.get()); }
    screen::WindowId number() const {
        return gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(window.get())));
    }

private:
    gobject::GObjectPointer<GtkWindow> window;
};

/// The panel and our own dialogs, which need its place and the keyboard.
class PanelDialogsTest : public PanelFixture {
protected:
    bool isPanelInFront() const { return contentAt(box().x + 20, box().y + 300); }
    void untilFocused(const std::string& what, screen::WindowId window) {
        until(what + " has the keyboard", [&] { return windows.focused() == window; });
    }
    void untilActive(const Dialog& dialog) {
        until("the dialog has the keyboard",
              [&] { return windows.describe(dialog.number()).isMapped && dialog.isActive(); });
    }
};

TEST_F(PanelDialogsTest, StepsAsideForADialogOfOursAndHasTheKeyboardAgainAfterIt) {
    // Where the panel is, so that it must come in front again by itself.
    screen::OtherProgram other({300, 330, 500, 300});
    settle(other);
    show();
    Dialog dialog;
    until("the dialog is in front of the panel",
          [&] { return windows.describe(dialog.number()).isMapped && !isPanelInFront(); });
    if (hasManager())
        until("the dialog has the keyboard",
              [&] { return windows.focused() != panelWindow() && dialog.isActive(); });
    EXPECT_TRUE(panel->isVisible());
    panel->makeKeyAndOrderFront();
    digest();
    EXPECT_FALSE(isPanelInFront()) << "a show comes in front of the dialog";
    picture("dialog");
    // As some managers do for the window that follows the dialog.
    XRaiseWindow(connection.display(), other.window());
    connection.sync();
    const screen::WindowId gone = dialog.number();
    dialog.close();
    until("the manager has forgotten the dialog", [&] {
        const auto managed = windows.managed();
        return std::none_of(managed.begin(), managed.end(),
                            [&](const auto& window) { return window.identifier == gone; });
    });
    until("the panel is in front again", [this] { return isPanelInFront(); });
    until("the panel has the keyboard again",
          [this] { return windows.focused() == panelWindow(); });
    typeIntoPanel("back");
    hide();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
}

TEST_F(PanelDialogsTest, ComesAfterADialogThatIsOpenAlready) {
    screen::OtherProgram other;
    settle(other);
    Dialog dialog;
    until("the dialog is shown", [&] { return windows.describe(dialog.number()).isMapped; });
    panel->makeKeyAndOrderFront();
    until("the panel has drawn", [this] {
        GdkFrameClock* const clock = gtk_widget_get_frame_clock(content->widget());
        return clock && gdk_frame_clock_get_frame_counter(clock) >= 2;
    });
    digest();
    EXPECT_FALSE(isPanelInFront());
    EXPECT_NE(windows.focused(), panelWindow());
    dialog.close();
    until("the panel is in front", [this] { return isPanelInFront(); });
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
}

TEST_F(PanelDialogsTest, IsNotSeenForAMomentWhileADialogIsOpen) {
    show();
    hide();
    Dialog dialog;
    until("the dialog is shown", [&] { return windows.describe(dialog.number()).isMapped; });
    EXPECT_FALSE(showAndLookEarly());
    dialog.close();
    until("the panel is in front", [this] { return isPanelInFront(); });
}

TEST_F(PanelDialogsTest, IsInItsPlaceAtOnceAfterItWasHiddenAside) {
    show();
    const int left = corner().x;
    {
        Dialog dialog;
        until("the panel is aside", [&] { return corner().x != left; });
        hide();
    }
    digest();
    const auto seen = showAndLookEarly();
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->x, left);
}

TEST_F(PanelDialogsTest, GetsTheKeyboardOnlyAfterTheLastOfSeveral) {
    if (hasManager())
        GTEST_SKIP() << "a window manager chooses who gets the keyboard of the upper dialog";
    show();
    Dialog lower;
    untilActive(lower);
    Dialog upper;
    until("the upper dialog is shown", [&] { return windows.describe(upper.number()).isMapped; });
    upper.close();
    digest();
    EXPECT_FALSE(isPanelInFront());
    lower.close();
    until("the panel is in front again", [this] { return isPanelInFront(); });
    untilFocused("the panel", panelWindow());
}

TEST_F(PanelDialogsTest, GetsTheKeyboardBackAlsoIfItLostItToTheDialogBeforeItHeardOfTheDialog) {
    if (hasManager())
        GTEST_SKIP() << "the test plays the window manager";
    const screen::OtherProgram outside({-100, -100, 1, 1}, screen::OtherProgram::Kind::unmanaged);
    until("there is a window outside the screen",
          [&] { return windows.describe(outside.window()).isMapped; });
    show();
    digest();
    XSetInputFocus(connection.display(), outside.window(), RevertToNone, CurrentTime);
    connection.sync();
    Dialog dialog;
    until("the dialog is shown", [&] { return windows.describe(dialog.number()).isMapped; });
    dialog.close();
    untilFocused("the panel", panelWindow());
}

TEST_F(PanelDialogsTest, LeavesTheKeyboardToADialogThatFollowsAnother) {
    show();
    Dialog first;
    untilActive(first);
    first.close();
    Dialog second;
    untilActive(second);
    digest();
    EXPECT_TRUE(second.isActive());
    second.close();
    untilFocused("the panel", panelWindow());
}

TEST_F(PanelDialogsTest, LeavesTheKeyboardToTheWindowThatIsClickedAfterADialog) {
    if (hasManager())
        GTEST_SKIP() << "a window manager takes its time to forget the dialog";
    screen::OtherProgram other;
    settle(other);
    show();
    Dialog dialog;
    untilActive(dialog);
    dialog.close();
    untilFocused("the panel", panelWindow());
    const auto place = windows.describe(other.window()).origin;
    pointer.click({place.x + 20, place.y + 20});
    until("the other program has had the click", [&] {
        other.listen();
        return other.clicks() == 1;
    });
    digest();
    other.takeKeyboard();
    digest();
    EXPECT_EQ(windows.focused(), other.window());
}

} // namespace

} // namespace kelo::test
