#include "component/input/FakeSources.h"
#include "component/input/InputFixture.h"

#include "linux/input/ActiveWindowFocus.h"

#include <X11/keysym.h>

namespace kelo::tests {

/// Keys and buttons that are pressed while the chord is down in a window of ours, where the toolkit
/// alone tells of them. The keys are real, and the test tells of the modifiers.
class OwnPress : public InputFixture {
protected:
    void SetUp() override {
        namespace mask = platform::event_mask;
        ASSERT_TRUE(
            toolkit.addLocalMonitor(mask::otherPress, [this](const platform::EventPointer& event) {
                EXPECT_EQ(event->keyCode, platform::key::other);
                ++presses;
                return event;
            }));
        focusOurs(window);
        tell(control | option);
    }
    /// Also hears of each key, which comes after the press is told.
    void hearKeys() {
        ASSERT_TRUE(toolkit.addLocalMonitor(
            platform::event_mask::keyDown, [this](const platform::EventPointer& event) {
                ++keys;
                escapes += event->keyCode == platform::key::escape ? 1 : 0;
                return event;
            }));
    }
    /// How many presses were told since the last call, once all that was pressed has come. Escape
    /// is pressed for that, while no modifier is down.
    int told() {
        const int before = escapes;
        tell(0);
        keyboard.tap(XK_Escape);
        until("the last key comes", [&] { return escapes > before; });
        tell(control | option);
        return std::exchange(presses, 0);
    }
    void waitForKeys(int count) {
        until("the keys come", [&] { return keys >= count; });
    }

    input::ModifierSource::Handler tell;
    std::function<void()> unused;
    input::KeyboardMonitors toolkit{[this] {
        input::KeyboardWatch watch;
        watch.focus = std::make_unique<input::ActiveWindowFocus>();
        watch.ownWindows = std::make_unique<FakeSource>(true, true, &tell, &unused);
        return watch;
    }};
    OwnWindow window;
    int presses = 0;
    int keys = 0;
    int escapes = 0;
};

TEST_F(OwnPress, OfAKeyIsToldAlsoWhereNobodyHearsOfKeys) {
    keyboard.tap(XK_t);
    until("the press is told", [this] { return presses == 1; });
}

TEST_F(OwnPress, OfAKeyIsToldOnceWhileItRepeats) {
    hearKeys();
    for (int time = 1; time <= 2; ++time) {
        const int before = keys;
        keyboard.down(XK_t);
        waitForKeys(before + 5);
        keyboard.up(XK_t);
        EXPECT_EQ(told(), 1);
    }
}

TEST_F(OwnPress, OfAMouseButtonIsTold) {
    // The toolkit drops a click into a window that has not been laid out yet.
    GtkEventController* const motion = gtk_event_controller_motion_new();
    gtk_widget_add_controller(GTK_WIDGET(window.window()), motion);
    until("the pointer is in the window", [&] {
        const auto [x, y] = keyboard.centreOf(window.identifier());
        keyboard.moveTo(x, y);
        return gtk_event_controller_motion_contains_pointer(GTK_EVENT_CONTROLLER_MOTION(motion)) ==
               TRUE;
    });
    keyboard.click(1);
    until("the press is told", [this] { return presses == 1; });
}

TEST_F(OwnPress, BeforeTheChordDoesNotCountAlsoWhileItRepeats) {
    hearKeys();
    tell(control);
    keyboard.down(XK_t);
    waitForKeys(3);
    tell(control | option);
    waitForKeys(6);
    keyboard.up(XK_t);
    EXPECT_EQ(told(), 0);
}

TEST_F(OwnPress, IsNoneOfModifierKeys) {
    hearKeys();
    for (const unsigned symbol : {XK_Shift_L, XK_Shift_R, XK_Control_R, XK_Alt_L})
        keyboard.tap(symbol);
    waitForKeys(4);
    EXPECT_EQ(told(), 0);
}

} // namespace kelo::tests
