#include "component/gtk/RunningProgram.h"

#include <gdk/gdkkeysyms.h>
#include <glibmm/spawn.h>
#include <gtest/gtest.h>
#include <gtkmm/label.h>

// After the others, because X11 defines macros with names that they use.
#include <gdk/x11/gdkx.h>

#include <X11/XKBlib.h>

namespace kelo::tests {
namespace {

constexpr const char* command = "Register a Passkey on This Mac…";

/// While it exists, the keyboard has a second, Cyrillic layout, which is the active one.
class CyrillicLayout {
public:
    CyrillicLayout() {
        Glib::spawn_command_line_sync("setxkbmap us,ru");
        activate(1);
    }
    ~CyrillicLayout() {
        activate(0);
        Glib::spawn_command_line_sync("setxkbmap us");
    }
    CyrillicLayout(const CyrillicLayout&) = delete;
    CyrillicLayout& operator=(const CyrillicLayout&) = delete;

    static unsigned active() {
        XkbStateRec state{};
        XkbGetState(display(), XkbUseCoreKbd, &state);
        return state.group;
    }

private:
    static Display* display() { return gdk_x11_display_get_xdisplay(gdk_display_get_default()); }
    static void activate(unsigned layout) {
        XkbLockGroup(display(), XkbUseCoreKbd, layout);
        XSync(display(), False);
    }
};

class MainMenu : public testing::Test {
protected:
    /// The visible label with the text; null when there is none.
    Gtk::Label* entry(const std::string& text) { return labelSaying(program.window("Kelo"), text); }
    void openAccountMenu() {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the first menu is open", [&] { return entry("Settings…"); });
        program.screen.press(GDK_KEY_Right);
        RunningProgram::until("the next menu is open", [&] { return entry(command); });
    }

    /// Whether assistive technology finds this on the entry with the text.
    bool hasAccessible(GtkAccessibleProperty property, const std::string& text,
                       const std::string& value) {
        auto* button = entry(text)->get_ancestor(g_type_from_name("GtkModelButton"));
        char* different = gtk_test_accessible_check_property(GTK_ACCESSIBLE(button->gobj()),
                                                             property, value.c_str());
        const bool same = different == nullptr;
        g_free(different);
        return same;
    }
    bool hasAccessibleShortcut(const std::string& text, const std::string& shortcut) {
        return hasAccessible(GTK_ACCESSIBLE_PROPERTY_KEY_SHORTCUTS, text, shortcut);
    }

    RunningProgram program;
};

TEST_F(MainMenu, OpensWithF10AndRunsACommandWithEnter) {
    program.run([&] {
        openAccountMenu();
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("the command ran",
                              [&] { return program.app.count("register") == 1; });
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
    });
}

TEST_F(MainMenu, OpensWithTheMouse) {
    program.run([&] {
        program.click(*entry("Account"));
        RunningProgram::until("the menu is open", [&] { return entry(command); });
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
        EXPECT_EQ(program.app.count("register"), 0);
    });
}

TEST_F(MainMenu, LeftWithEscapeItGivesTheKeyboardBackToThePage) {
    program.run([&] {
        openAccountMenu();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
        RunningProgram::until("the page has the keyboard",
                              [&] { return program.app.page->area.has_focus(); });
    });
}

TEST_F(MainMenu, LeftWithEscapeItGivesTheKeyboardBackToThePanelThatHadIt) {
    program.run([&] {
        program.app.state->onLogin = true;
        RunningProgram::settle();
        auto* button = buttonNamed(program.window("Kelo"), "Sign in with passkey");
        button->grab_focus();
        openAccountMenu();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the button has the keyboard", [&] { return button->has_focus(); });
    });
}

TEST_F(MainMenu, CommandFollowsThePublishedValueAlsoWhileTheMenuIsOpen) {
    program.run([&] {
        openAccountMenu();
        EXPECT_TRUE(entry(command)->is_sensitive());
        program.app.state->registering = true;
        RunningProgram::until("it is greyed out", [&] { return !entry(command)->is_sensitive(); });
        program.screen.press(GDK_KEY_Return);
        program.click(*entry(command));
        program.app.state->registering = false;
        RunningProgram::until("it is back", [&] { return entry(command)->is_sensitive(); });
        EXPECT_EQ(program.app.count("register"), 0);
        // An open menu grabs the keyboard, even from the program of the next test.
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
    });
}

TEST_F(MainMenu, ShortcutRunsItsEntryFromTheKeyboard) {
    program.run([&] {
        program.untilActive(program.window("Kelo"));
        program.screen.press(GDK_KEY_l, {GDK_KEY_Control_L});
        RunningProgram::until("the command ran", [&] { return program.app.count("copy") == 1; });
        EXPECT_EQ(program.app.count("register"), 0);
    });
}

TEST_F(MainMenu, ShortcutNeedsItsModifier) {
    program.run([&] {
        program.untilActive(program.window("Kelo"));
        program.screen.press(GDK_KEY_l);
        program.screen.press(GDK_KEY_l, {GDK_KEY_Alt_L});
        program.screen.press(GDK_KEY_l, {GDK_KEY_Control_L});
        RunningProgram::until("the command ran", [&] { return program.app.count("copy") > 0; });
        RunningProgram::settle();
        EXPECT_EQ(program.app.count("copy"), 1);
    });
}

TEST_F(MainMenu, ShortcutWorksOnACyrillicLayout) {
    program.run([&] {
        const CyrillicLayout layout;
        ASSERT_EQ(CyrillicLayout::active(), 1u);
        program.untilActive(program.window("Kelo"));
        program.screen.press(GDK_KEY_l, {GDK_KEY_Control_L});
        RunningProgram::until("the command ran", [&] { return program.app.count("copy") == 1; });
    });
}

TEST_F(MainMenu, ShortcutOfADisabledEntryDoesNothing) {
    program.run([&] {
        program.untilActive(program.window("Kelo"));
        program.app.state->registering = true;
        RunningProgram::settle();
        program.screen.press(GDK_KEY_l, {GDK_KEY_Control_L});
        RunningProgram::settle();
        EXPECT_EQ(program.app.count("copy"), 0);
        program.app.state->registering = false;
        RunningProgram::settle();
        program.screen.press(GDK_KEY_l, {GDK_KEY_Control_L});
        RunningProgram::until("the command ran", [&] { return program.app.count("copy") > 0; });
        EXPECT_EQ(program.app.count("copy"), 1);
    });
}

TEST_F(MainMenu, ShortcutsAreShownBesideTheirEntries) {
    program.run([&] {
        openAccountMenu();
        EXPECT_TRUE(entry("Ctrl+L"));
        program.screen.press(GDK_KEY_Left);
        RunningProgram::until("the program's menu is open", [&] { return entry("Quit"); });
        EXPECT_TRUE(entry("Ctrl+,"));
        EXPECT_TRUE(entry("Ctrl+W"));
        EXPECT_TRUE(entry("Ctrl+Q"));
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry("Quit"); });
    });
}

TEST_F(MainMenu, AssistiveTechnologyFindsTheEntriesByTheirTexts) {
    program.run([&] {
        openAccountMenu();
        EXPECT_TRUE(hasAccessible(GTK_ACCESSIBLE_PROPERTY_LABEL, command, command));
        auto* button = entry(command)->get_ancestor(g_type_from_name("GtkModelButton"));
        EXPECT_FALSE(gtk_test_accessible_has_relation(GTK_ACCESSIBLE(button->gobj()),
                                                      GTK_ACCESSIBLE_RELATION_LABELLED_BY))
            << "it would come before the name";
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry(command); });
    });
}

TEST_F(MainMenu, AssistiveTechnologyFindsTheShortcuts) {
    program.run([&] {
        openAccountMenu();
        EXPECT_TRUE(hasAccessibleShortcut("Copy Address", "Control+L"));
        EXPECT_FALSE(hasAccessibleShortcut(command, "Control+L"));
        program.screen.press(GDK_KEY_Left);
        RunningProgram::until("the program's menu is open", [&] { return entry("Quit"); });
        EXPECT_TRUE(hasAccessibleShortcut("Settings…", "Control+,"));
        EXPECT_TRUE(hasAccessibleShortcut("Close Window", "Control+W"));
        EXPECT_TRUE(hasAccessibleShortcut("Quit", "Control+Q"));
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry("Quit"); });
    });
}

TEST_F(MainMenu, BeginsWithTheProgramsOwnMenu) {
    program.run([&] {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the first menu is open", [&] { return entry("Settings…"); });
        const auto texts = textsIn(program.window("Kelo"));
        const std::vector<std::string> expected{
            "Kelo",   "Settings…",  "Ctrl+,",       "Keyboard Shortcuts",
            "Ctrl+?", "About Kelo", "Close Window", "Ctrl+W",
            "Quit",   "Ctrl+Q",     "Account",      "View"};
        EXPECT_EQ(texts, expected);
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] { return !entry("Quit"); });
    });
}

TEST_F(MainMenu, CloseWindowClosesTheWindowThatIsUsed) {
    program.run([&] {
        program.host.openSettings();
        program.untilActive(program.window("Settings"));
        program.screen.press(GDK_KEY_w, {GDK_KEY_Control_L});
        RunningProgram::until("only the main window is left",
                              [&] { return program.windowsOnScreen().size() == 1; });
        program.untilActive(program.window("Kelo"));
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] { return entry("Close Window"); });
        program.click(*entry("Close Window"));
        RunningProgram::until("no window is left",
                              [&] { return program.windowsOnScreen().empty(); });
    });
}

TEST_F(MainMenu, ClosesAndQuits) {
    program.runToItsOwnEnd([&] {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] { return entry("Quit"); });
        program.click(*entry("Quit"));
    });
    EXPECT_EQ(program.status, 0);
}

TEST_F(MainMenu, HeadingIsNotLitAfterItsEntryOpenedAnotherWindow) {
    program.run([&] {
        auto* const heading = entry("Account")->get_parent();
        ASSERT_TRUE(heading);
        auto* const first = heading->get_prev_sibling();
        ASSERT_TRUE(first);
        const auto isLit = [&] {
            return (first->get_state_flags() & Gtk::StateFlags::SELECTED) !=
                   Gtk::StateFlags::NORMAL;
        };
        program.click(*first);
        RunningProgram::until("the menu is open", [&] { return entry("Settings…") && isLit(); });
        program.click(*entry("Settings…"));
        program.untilActive(program.window("Settings"));
        RunningProgram::until("the heading is as before", [&] { return !isLit(); });
        program.window("Settings").close();
        program.untilActive(program.window("Kelo"));
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] { return entry("Settings…") && isLit(); });
        program.screen.press(GDK_KEY_Return);
        program.untilActive(program.window("Settings"));
        RunningProgram::until("the heading is as before", [&] { return !isLit(); });
    });
}

TEST_F(MainMenu, PointerOverAHeadingLeavesTheKeyboardToThePage) {
    program.run([&] {
        auto& page = program.app.page->area;
        RunningProgram::until("the page has the keyboard", [&] { return page.has_focus(); });
        auto* const heading = entry("Account")->get_parent();
        const auto box = program.boxOf(*heading);
        program.screen.moveTo(box.x + 2, box.y + 2);
        program.screen.moveTo(box.x + box.width / 2, box.y + box.height / 2);
        RunningProgram::until("the heading is lit", [&] {
            return (heading->get_state_flags() & Gtk::StateFlags::SELECTED) !=
                   Gtk::StateFlags::NORMAL;
        });
        RunningProgram::settle();
        EXPECT_TRUE(page.has_focus());
        program.screen.moveTo(box.x, program.screen.height() - 1);
    });
}

} // namespace
} // namespace kelo::tests
