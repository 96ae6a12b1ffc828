#include "component/LogReader.h"
#include "component/input/InputFixture.h"

#include "linux/window/WindowIdentity.h"

#include <X11/keysym.h>

#include <string>
#include <vector>

namespace kelo::tests {

using platform::EventPointer;

namespace {

struct Known final : platform::Window {};

/// Writes down each key that gets to the window's content.
class Content {
public:
    explicit Content(const OwnWindow& window) {
        GtkEventController* const controller = gtk_event_controller_key_new();
        g_signal_connect(controller, "key-pressed", G_CALLBACK(pressed), this);
        g_signal_connect(controller, "key-released", G_CALLBACK(released), this);
        GtkWidget* const page = gtk_text_new();
        gtk_widget_add_controller(page, controller);
        gtk_window_set_child(window.window(), page);
        gtk_widget_grab_focus(page);
    }
    std::vector<std::string> keys;

private:
    static gboolean pressed(GtkEventControllerKey*, guint symbol, guint, GdkModifierType,
                            Content* self) {
        self->keys.push_back(std::string("+") + gdk_keyval_name(symbol));
        return FALSE;
    }
    static void released(GtkEventControllerKey*, guint symbol, guint, GdkModifierType,
                         Content* self) {
        self->keys.push_back(std::string("-") + gdk_keyval_name(symbol));
    }
};

using Keys = std::vector<std::string>;

} // namespace

class Escape : public InputFixture {
protected:
    std::shared_ptr<platform::Window> identity = std::make_shared<Known>();
    OwnWindow panel{true};
    Content panelContent{panel};
    OwnWindow main;
    Content mainContent{main};

    void SetUp() override {
        window::setWindowIdentity(panel.window(), identity);
        ASSERT_TRUE(addEscapeMonitor());
    }
    /// Takes Escape in the panel and nothing else.
    std::shared_ptr<platform::EventMonitor> addEscapeMonitor() {
        return monitors.addLocalMonitor(
            platform::event_mask::keyDown, [this](const EventPointer& event) -> EventPointer {
                heard.push_back(*event);
                if (event->keyCode == platform::key::escape && event->window == identity)
                    return nullptr;
                return event;
            });
    }
    void focusPanel() {
        keyboard.forceFocus(panel.identifier());
        until("the panel has the keyboard", [this] { return panel.isActive(); });
    }
    /// The keys that came to the content, once a last one did.
    static Keys keysOf(Content& content) {
        until("the last key comes",
              [&] { return !content.keys.empty() && content.keys.back() == "-F9"; });
        return content.keys;
    }

    std::vector<platform::Event> heard;
};

TEST_F(Escape, InTheWindowAskedForIsTakenWithItsRelease) {
    focusPanel();
    keyboard.tap(XK_Escape);
    keyboard.tap(XK_F9);
    EXPECT_EQ(keysOf(panelContent), (Keys{"+F9", "-F9"}));
    ASSERT_EQ(heard.size(), 2u);
    EXPECT_EQ(heard[0].kind, platform::event_mask::keyDown);
    EXPECT_EQ(heard[0].keyCode, 53);
    EXPECT_EQ(heard[0].window, identity);
    EXPECT_EQ(heard[1].keyCode, platform::key::other);
}

TEST_F(Escape, InAnotherWindowOfOursReachesItsContent) {
    focusOurs(main);
    keyboard.tap(XK_Escape);
    keyboard.tap(XK_F9);
    EXPECT_EQ(keysOf(mainContent), (Keys{"+Escape", "-Escape", "+F9", "-F9"}));
    EXPECT_EQ(heard.at(0).window, nullptr);
}

TEST_F(Escape, OfWhichThePanelTookThePressEndsInNoOtherWindow) {
    focusPanel();
    keyboard.down(XK_Escape);
    until("the press is heard", [this] { return !heard.empty(); });
    keyboard.forceFocus(main.identifier());
    until("the main window has the keyboard", [this] { return main.isActive(); });
    keyboard.up(XK_Escape);
    keyboard.tap(XK_F9);
    EXPECT_EQ(keysOf(mainContent), (Keys{"+F9", "-F9"}));
}

TEST_F(Escape, TakenOnceIsNotTakenElsewhereAfterItsReleaseWentToAnotherProgram) {
    focusPanel();
    keyboard.down(XK_Escape);
    until("the press is heard", [this] { return !heard.empty(); });
    focusOther();
    keyboard.up(XK_Escape);
    focusOurs(main);
    keyboard.tap(XK_Escape);
    keyboard.tap(XK_F9);
    EXPECT_EQ(keysOf(mainContent), (Keys{"+Escape", "-Escape", "+F9", "-F9"}));
}

TEST_F(Escape, ReleasedInAWindowOfOursAfterAPressElsewhereIsNotTaken) {
    focusPanel();
    keyboard.tap(XK_Escape); // taken as a whole
    until("it is heard", [this] { return heard.size() == 1; });
    keyboard.tap(XK_F9);
    keysOf(panelContent);
    focusOther();
    keyboard.down(XK_Escape);
    until("the other program gets it", [this] { return keyboard.pressesInOther() > 0; });
    focusOurs(main);
    keyboard.up(XK_Escape);
    keyboard.tap(XK_F9);
    EXPECT_EQ(keysOf(mainContent), (Keys{"-Escape", "+F9", "-F9"}));
}

TEST_F(Escape, EventsThatAreNoKeysAreLeftAlone) {
    const test::LogReader log;
    focusPanel();
    keyboard.moveTo(20, 20);
    keyboard.moveTo(40, 40);
    keyboard.tap(XK_F9);
    keysOf(panelContent);
    EXPECT_EQ(log.complaints(), Keys{});
}

TEST_F(Escape, ComesWithTheModifiersThatAreDown) {
    focusPanel();
    keyboard.down(XK_Shift_L);
    keyboard.tap(XK_Escape);
    keyboard.up(XK_Shift_L);
    until("Escape is heard", [this] { return heard.size() >= 2; });
    EXPECT_EQ(heard[1].keyCode, platform::key::escape);
    EXPECT_EQ(heard[1].modifierFlags, shift);
}

TEST_F(Escape, IsHeardInWindowsMadeLater) {
    OwnWindow later(true);
    Content content(later);
    keyboard.forceFocus(later.identifier());
    until("the new window has the keyboard", [&] { return later.isActive(); });
    keyboard.tap(XK_Escape);
    keyboard.tap(XK_F9);
    EXPECT_EQ(keysOf(content), (Keys{"+Escape", "-Escape", "+F9", "-F9"}));
    EXPECT_EQ(heard.size(), 2u);
}

TEST_F(Escape, TakenByOneMonitorIsNotHeardByTheNext) {
    int next = 0;
    monitors.addLocalMonitor(platform::event_mask::keyDown, [&next](const EventPointer& event) {
        ++next;
        return event;
    });
    focusPanel();
    keyboard.tap(XK_Escape);
    keyboard.tap(XK_F9);
    keysOf(panelContent);
    EXPECT_EQ(next, 1);
}

TEST_F(Escape, IsHeardByAMonitorOfModifiersAndKeys) {
    std::vector<platform::EventMask> kinds;
    monitors.addLocalMonitor(platform::event_mask::flagsChanged | platform::event_mask::keyDown,
                             [&kinds](const EventPointer& event) {
                                 kinds.push_back(event->kind);
                                 return event;
                             });
    focusOurs(main);
    keyboard.tap(XK_Escape);
    keyboard.tap(XK_F9);
    keysOf(mainContent);
    EXPECT_EQ(kinds, (std::vector<platform::EventMask>(2, platform::event_mask::keyDown)));
}

TEST_F(Escape, MonitorsMayAddMonitors) {
    int added = 0;
    monitors.addLocalMonitor(platform::event_mask::keyDown, [&](const EventPointer& event) {
        for (int more = 0; more < 100; ++more)
            monitors.addLocalMonitor(platform::event_mask::keyDown,
                                     [&added](const EventPointer& same) {
                                         ++added;
                                         return same;
                                     });
        return event;
    });
    focusPanel();
    keyboard.tap(XK_F8);
    keyboard.tap(XK_F9);
    keysOf(panelContent);
    EXPECT_EQ(added, 100) << "those added by the first key hear the second, and no more";
}

TEST_F(Escape, LeavesWindowsAloneOnceNobodyListens) {
    {
        input::KeyboardMonitors gone;
        gone.addLocalMonitor(platform::event_mask::keyDown,
                             [](const EventPointer&) { return EventPointer(); });
    }
    focusOurs(main);
    keyboard.tap(XK_F9);
    EXPECT_EQ(keysOf(mainContent), (Keys{"+F9", "-F9"}));
}

} // namespace kelo::tests
