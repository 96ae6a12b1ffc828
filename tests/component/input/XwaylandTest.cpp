// What an X11 program hears on a Wayland desktop.
#include "component/input/InputFixture.h"
#include "linux/input/HotkeyStatus.h"
#include "linux/input/ModifierSources.h"

#include <X11/keysym.h>
#include <gmock/gmock.h>

namespace kelo::tests {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Xwayland : public InputFixture {};

} // namespace

TEST_F(Xwayland, CountsAsTheWaylandDesktopThatItIsOn) {
    EXPECT_EQ(input::displayKindOfEnvironment(), input::DisplayKind::wayland);
    EXPECT_EQ(input::displayKind(gdk_display_get_default()), input::DisplayKind::wayland);
}

TEST_F(Xwayland, IsNotSaidToHearTheKeysOfEveryProgram) {
    const auto status = input::hotkeyStatus();
    ASSERT_EQ(status.size(), 3U);
    EXPECT_EQ(status[0].name, "evdev");
    EXPECT_EQ(status[1].name, "portal");
    EXPECT_EQ(status[2].name, "X11");
    EXPECT_FALSE(status[2].availability.available);
    EXPECT_THAT(status[2].availability.reason, HasSubstr("This is a Wayland desktop"));
}

TEST_F(Xwayland, OwnWindowsHearTheChord) {
    const auto local = monitors.addLocalMonitor(platform::event_mask::flagsChanged,
                                                [this](const platform::EventPointer& event) {
                                                    log.push_back({false, event->modifierFlags});
                                                    return event;
                                                });
    ASSERT_TRUE(local);
    const OwnWindow window;
    focusOurs(window);
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Alt_L);
    keyboard.up(XK_Alt_L);
    keyboard.up(XK_Control_L);
    EXPECT_THAT(seenSoFar(4), ElementsAre(Seen{false, control}, Seen{false, control | option},
                                          Seen{false, control}, Seen{false, 0}));
}

} // namespace kelo::tests
