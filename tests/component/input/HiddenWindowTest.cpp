#include "component/input/InputFixture.h"

#include "linux/input/ActiveWindowFocus.h"

namespace kelo::tests {

/// With GTK 4.8, such a window goes on saying that it is active.
class HiddenWindow : public InputFixture {
protected:
    static void hide(const OwnWindow& window) {
        gtk_widget_set_visible(GTK_WIDGET(window.window()), FALSE);
    }
};

TEST_F(HiddenWindow, HasNoKeyboard) {
    OwnWindow ours;
    focusOurs(ours);
    const input::ActiveWindowFocus focus;
    ASSERT_TRUE(focus.isOurs());
    hide(ours);
    EXPECT_FALSE(focus.isOurs());
}

TEST_F(HiddenWindow, HasLeftTheKeyboardToOthers) {
    OwnWindow ours;
    focusOurs(ours);
    input::ActiveWindowFocus focus;
    int changes = 0;
    focus.onChange([&changes] { ++changes; });
    hide(ours);
    until("the change is told", [&changes] { return changes > 0; });
    EXPECT_FALSE(focus.isOurs());
}

TEST_F(HiddenWindow, HasTheKeyboardOnlyOnceItIsShownAgainAndGetsIt) {
    OwnWindow ours;
    focusOurs(ours);
    input::ActiveWindowFocus focus;
    hide(ours);
    focusOther();
    gtk_widget_set_visible(GTK_WIDGET(ours.window()), TRUE);
    EXPECT_FALSE(focus.isOurs());
    int changes = 0;
    focus.onChange([&changes] { ++changes; });
    focusOurs(ours);
    until("the change is told", [&] { return changes > 0 && focus.isOurs(); });
}

} // namespace kelo::tests
