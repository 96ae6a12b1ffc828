#include "component/input/InputFixture.h"

#include "linux/input/ActiveWindowFocus.h"
#include "linux/window/X11Toolkit.h"

#include <X11/Xlib.h>

namespace kelo::tests {

class HiddenWindow : public InputFixture {
protected:
    /// The toolkit goes on taking it for active, as an old one does in any case.
    static void hideUntold(const OwnWindow& window) {
        gtk_widget_set_visible(GTK_WIDGET(window.window()), FALSE);
        XSync(window::xlibDisplay(gdk_display_get_default()), True);
        ASSERT_TRUE(window.isActive());
    }
};

TEST_F(HiddenWindow, HasNoKeyboardAlthoughTheToolkitSaysSo) {
    OwnWindow ours;
    focusOurs(ours);
    const input::ActiveWindowFocus focus;
    ASSERT_TRUE(focus.isOurs());
    hideUntold(ours);
    EXPECT_FALSE(focus.isOurs());
}

TEST_F(HiddenWindow, ChangesTheFocusAlthoughTheToolkitTellsOfNoChange) {
    OwnWindow ours;
    focusOurs(ours);
    input::ActiveWindowFocus focus;
    int changes = 0;
    focus.onChange([&changes] { ++changes; });
    hideUntold(ours);
    until("the change is told", [&changes] { return changes > 0; });
    EXPECT_TRUE(ours.isActive());
}

TEST_F(HiddenWindow, HasTheKeyboardWhenItIsShownAgainAndGetsIt) {
    OwnWindow ours;
    focusOurs(ours);
    input::ActiveWindowFocus focus;
    hideUntold(ours);
    int changes = 0;
    focus.onChange([&changes] { ++changes; });
    focusOther();
    gtk_widget_set_visible(GTK_WIDGET(ours.window()), TRUE);
    EXPECT_FALSE(focus.isOurs());
    focusOurs(ours);
    until("the change is told", [&] { return changes > 0 && focus.isOurs(); });
}

} // namespace kelo::tests
