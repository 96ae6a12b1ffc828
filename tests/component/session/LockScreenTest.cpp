// What the X server shows: real lock screens, and programs that only resemble one.
#include "component/session/SessionFixture.h"
#include "linux/session/X11LockScreen.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/ChildProcess.h"
#include "testing/screen/Keyboard.h"
#include "testing/screen/OtherProgram.h"
#include "testing/screen/Windows.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>
#include <gdk/x11/gdkx.h>
#include <gtk/gtk.h>

#include <chrono>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelo::test {

namespace {

using screen::OtherProgram;

constexpr OtherProgram::Place wholeScreen{0, 0, 1280, 1024};

/// Another program, whose window is shown at once under every window manager.
class Other : public OtherProgram {
public:
    explicit Other(Place place = Place()) : OtherProgram(place, Kind::unmanaged) {}

    /// The manager may still be handing on the keyboard of a window that has just gone.
    void takeKeyboard() {
        settleManager();
        OtherProgram::takeKeyboard();
    }

private:
    /// Managers take what comes to them in order, and answer this question by a property.
    void settleManager() const {
        if (!screen::Windows(connection()).hasManager())
            return;
        const screen::XConnection asking;
        Display* const x = asking.display();
        const ::Window window = XCreateSimpleWindow(x, asking.root(), 0, 0, 1, 1, 0, 0, 0);
        XSelectInput(x, window, PropertyChangeMask);
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = asking.atom("_NET_REQUEST_FRAME_EXTENTS");
        event.xclient.format = 32;
        XSendEvent(x, asking.root(), False, SubstructureRedirectMask | SubstructureNotifyMask,
                   &event);
        XWindowEvent(x, window, PropertyChangeMask, &event);
    }
};

/// A window of ours like the voice panel's: no window manager manages it, and it lies above all.
class OwnPanel {
public:
    OwnPanel() {
        gtk_window_set_default_size(GTK_WINDOW(window), 300, 200);
        gtk_widget_realize(window);
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        XChangeWindowAttributes(x(), identifier(), CWOverrideRedirect, &attributes);
        gtk_widget_set_visible(window, TRUE);
        until([this] {
            XWindowAttributes now{};
            XGetWindowAttributes(x(), identifier(), &now);
            return now.map_state == IsViewable;
        });
        raise();
    }
    ~OwnPanel() { gtk_window_destroy(GTK_WINDOW(window)); }
    OwnPanel(const OwnPanel&) = delete;
    OwnPanel& operator=(const OwnPanel&) = delete;

    void raise() const {
        XRaiseWindow(x(), identifier());
        XSync(x(), False);
    }
    void takeKeyboard() const {
        XSetInputFocus(x(), identifier(), RevertToPointerRoot, CurrentTime);
        XSync(x(), False);
    }

    GtkWidget* window = gtk_window_new();

private:
    static Display* x() { return gdk_x11_display_get_xdisplay(gdk_display_get_default()); }
    XID identifier() const {
        return gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(window)));
    }
};

class LockScreen : public testing::Test {
protected:
    GdkDisplay* display() const { return gdk_display_get_default(); }
    bool isGrabbed() { return probe.isKeyboardGrabbed(); }
    bool isCovered() { return probe.isMonitorCovered(); }
    session::SessionParts parts() const {
        session::SessionParts made;
        made.locks = [](const session::LockSource::Changed&) {
            return std::vector<std::unique_ptr<session::LockSource>>();
        };
        made.screen = std::make_unique<session::X11LockScreen>(display());
        return made;
    }

    ScopedMainLoop loop;
    struct Toolkit {
        Toolkit() { gtk_init(); }
    } toolkit;
    session::X11LockScreen probe{gdk_display_get_default()};
};

class RealLockScreen : public LockScreen, public testing::WithParamInterface<const char*> {
protected:
    void start() {
        locker.emplace(std::vector<std::string>{KELO_LOCK_SCREEN, GetParam()},
                       std::map<std::string, std::string>{}, folder.path() / "locker.log");
    }
    void lock() {
        start();
        ASSERT_TRUE(until([this] { return isGrabbed() && isCovered(); }));
    }
    bool isInstalled() const {
        const gobject::GText path(g_find_program_in_path(GetParam()));
        return path != nullptr;
    }
    void unlock() {
        locker->end();
        ASSERT_TRUE(until([this] { return !isGrabbed(); }));
    }

    TemporaryFolder folder;
    std::optional<rig::ChildProcess> locker;
};

} // namespace

TEST_F(LockScreen, NothingIsGrabbedOrCoveredOnAnOrdinaryDesktop) {
    Other other;
    other.takeKeyboard();
    EXPECT_FALSE(isGrabbed());
    EXPECT_FALSE(isCovered());
}

TEST_F(LockScreen, GrabOfAnotherProgramIsSeenUntilItEnds) {
    Other other;
    other.grabKeyboard();
    EXPECT_TRUE(isGrabbed());
    EXPECT_TRUE(isGrabbed());
    other.releaseKeyboard();
    EXPECT_FALSE(isGrabbed());
}

TEST_F(LockScreen, QuestionTakesNoGrabAndMovesNoFocus) {
    Other other;
    other.takeKeyboard();
    const screen::XConnection watching;
    XSelectInput(watching.display(), other.window(), FocusChangeMask);
    watching.sync();
    const screen::Keyboard keyboard(other.connection());
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Alt_L);
    for (int count = 0; count < 200; ++count)
        EXPECT_FALSE(isGrabbed());
    keyboard.up(XK_Alt_L);
    keyboard.up(XK_Control_L);
    watching.sync();
    EXPECT_EQ(XPending(watching.display()), 0) << "a grab would have taken the focus for a moment";
    EXPECT_TRUE(other.hasKeyboard());
}

TEST_F(LockScreen, HeldChordIsNoGrab) {
    Other other;
    other.takeKeyboard();
    const screen::Keyboard keyboard(other.connection());
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Alt_L);
    other.connection().sync();
    EXPECT_FALSE(isGrabbed());
    keyboard.up(XK_Alt_L);
    keyboard.up(XK_Control_L);
}

TEST_F(LockScreen, KeyOfAShortcutIsAGrabWhileItIsDown) {
    Other manager;
    const screen::Keyboard keyboard(manager.connection());
    const auto key = keyboard.code(XK_space);
    Display* const x = manager.connection().display();
    XGrabKey(x, static_cast<int>(key), 0, DefaultRootWindow(x), False, GrabModeAsync,
             GrabModeAsync);
    manager.connection().sync();
    EXPECT_FALSE(isGrabbed());
    session::LinuxUserSession session(parts());
    SessionQuestions questions(session);
    keyboard.down(XK_space);
    manager.connection().sync();
    EXPECT_FALSE(questions.isUnlocked());
    keyboard.up(XK_space);
    manager.connection().sync();
    EXPECT_TRUE(until([&] { return questions.performed == 1; }));
}

TEST_F(LockScreen, OurOwnOpenMenuIsNoGrabOfAnother) {
    OwnPanel panel;
    panel.takeKeyboard();
    GtkWidget* const menu = gtk_popover_new();
    gtk_widget_set_parent(menu, panel.window);
    gtk_popover_popup(GTK_POPOVER(menu));
    ASSERT_TRUE(until([&] { return gtk_widget_get_mapped(menu); }));
    Other other;
    // Refused: the menu has it.
    ASSERT_NE(XGrabKeyboard(other.connection().display(), other.window(), False, GrabModeAsync,
                            GrabModeAsync, CurrentTime),
              GrabSuccess);
    EXPECT_FALSE(isGrabbed());
    gtk_popover_popdown(GTK_POPOVER(menu));
    gtk_widget_unparent(menu);
}

TEST_F(LockScreen, GrabIsNotDelivered) {
    session::LinuxUserSession session(parts());
    SessionQuestions questions(session);
    EXPECT_TRUE(questions.isUnlocked());
    Other other;
    other.grabKeyboard();
    EXPECT_FALSE(questions.isUnlocked());
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_TRUE(until([&] {
        return std::chrono::steady_clock::now() - begun > std::chrono::milliseconds(1500);
    }));
    other.releaseKeyboard();
    EXPECT_EQ(questions.performed, 1);
}

TEST_F(LockScreen, WindowAboveOursThatFillsTheMonitorCoversIt) {
    OwnPanel panel;
    Other other(wholeScreen);
    ASSERT_TRUE(until([&] {
        other.listen();
        return isCovered();
    }));
    panel.raise();
    EXPECT_FALSE(isCovered());
}

TEST_F(LockScreen, SmallerWindowAboveOursCoversNothing) {
    OwnPanel panel;
    Other other({0, 0, 1280, 1023});
    other.connection().sync();
    EXPECT_FALSE(isCovered());
}

TEST_F(LockScreen, SmallWindowAboveTheCoverDoesNotHideThatItCovers) {
    OwnPanel panel;
    Other cover(wholeScreen);
    Other dialog({100, 100, 300, 200});
    dialog.connection().sync();
    EXPECT_TRUE(until([&] { return isCovered(); }));
}

TEST_F(LockScreen, HiddenCoverCoversNothing) {
    OwnPanel panel;
    Other cover(wholeScreen);
    ASSERT_TRUE(until([&] { return isCovered(); }));
    cover.withdraw();
    EXPECT_TRUE(until([&] { return !isCovered(); }));
}

TEST_P(RealLockScreen, PerformsNothingWhileItIsThereAndAllAfterwards) {
    if (!isInstalled())
        GTEST_SKIP() << GetParam() << " is not installed";
    lock();
    session::LinuxUserSession session(parts());
    SessionQuestions questions(session);
    EXPECT_FALSE(questions.isUnlocked());
    const auto begun = std::chrono::steady_clock::now();
    until(
        [&] { return std::chrono::steady_clock::now() - begun > std::chrono::milliseconds(1500); });
    EXPECT_EQ(questions.performed, 0);
    unlock();
    EXPECT_TRUE(questions.isUnlocked());
}

TEST_P(RealLockScreen, IsHeardOfByWhoeverHasAWindowThere) {
    if (!isInstalled())
        GTEST_SKIP() << GetParam() << " is not installed";
    OwnPanel panel;
    panel.takeKeyboard();
    session::LinuxUserSession session(parts());
    int locks = 0;
    Observation observation;
    observation = session.observeLocking([&] {
        ++locks;
        observation = Observation();
    });
    start();
    EXPECT_TRUE(until([&] { return locks == 1; }));
    EXPECT_TRUE(isGrabbed());
}

INSTANTIATE_TEST_SUITE_P(Each, RealLockScreen, testing::Values("i3lock", "slock", "xscreensaver"),
                         [](const auto& locker) { return std::string(locker.param); });

TEST_F(LockScreen, QuestionTakesLessThanAMillisecond) {
    constexpr int times = 1000;
    const auto begun = std::chrono::steady_clock::now();
    for (int count = 0; count < times; ++count)
        isGrabbed();
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - begun;
    std::cout << "one question takes " << taken.count() / times << " µs\n";
    EXPECT_LT(taken.count() / times, 1000);
}

} // namespace kelo::test
