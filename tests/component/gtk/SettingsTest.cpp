#include "component/gtk/RunningProgram.h"
#include "linux/gtk/kit/ProgramWindow.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/label.h>
#include <gtkmm/listbox.h>
#include <gtkmm/listboxrow.h>
#include <gtkmm/text.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kelo::tests {
namespace {

class SettingsWindow : public testing::Test {
protected:
    void whileOpen(const std::function<void(Gtk::Window&)>& body) {
        program.run([&] {
            program.host.openSettings();
            auto& settings = program.window("Settings");
            program.untilActive(settings);
            body(settings);
        });
    }
    Gtk::Label& label(Gtk::Window& window, const std::string& text) {
        for (auto* label : visibleIn<Gtk::Label>(window))
            if (label->get_text().raw() == text)
                return *label;
        throw std::runtime_error("no text \"" + text + "\"");
    }
    void untilClosed() {
        RunningProgram::until("the settings are closed",
                              [&] { return program.windowsOnScreen().size() == 1; });
    }

    RunningProgram program;
};

TEST_F(SettingsWindow, OpensByItsKeyAndClosesByTheWindowsOne) {
    program.run([&] {
        program.screen.press(GDK_KEY_comma, {GDK_KEY_Control_L});
        program.untilActive(program.window("Settings"));
        program.screen.press(GDK_KEY_w, {GDK_KEY_Control_L});
        untilClosed();
    });
}

TEST_F(SettingsWindow, ShowsEachValueAtTheEndOfItsLabelsLineAndTheRowsInTheirOrder) {
    whileOpen([&](Gtk::Window& settings) {
        EXPECT_EQ(textsIn(*settings.get_child()),
                  (std::vector<std::string>{"Version", "1.4.2 (57)", "Backend",
                                            "assistant.example.com"}));
        const auto content = program.boxOf(*settings.get_child());
        const int middle = content.x + content.width / 2;
        int below = 0;
        for (const auto& [name, value] :
             {std::pair{"Version", "1.4.2 (57)"}, {"Backend", "assistant.example.com"}}) {
            const auto left = program.boxOf(label(settings, name));
            const auto right = program.boxOf(label(settings, value));
            EXPECT_LT(left.x + left.width, middle) << name;
            EXPECT_GE(right.x, left.x + left.width + 12) << name;
            EXPECT_EQ(right.x + right.width - content.x, content.width - (left.x - content.x))
                << name << ": as far from its edge as the label from its own";
            EXPECT_EQ(left.y, right.y) << name;
            EXPECT_GT(left.y, below) << name;
            below = left.y + left.height;
        }
        // A short value stands at the line's end, not anywhere in the room it has.
        EXPECT_GT(program.boxOf(label(settings, "1.4.2 (57)")).x, middle);
    });
}

TEST_F(SettingsWindow, HasItsSizeAndNobodyChangesIt) {
    whileOpen([&](Gtk::Window& settings) {
        EXPECT_EQ(settings.get_child()->get_width(), 360);
        EXPECT_EQ(settings.get_child()->get_height(), 140);
        const auto limits = program.screen.sizeLimits(settings.get_surface()->gobj());
        EXPECT_GT(limits.maximumWidth, 0);
        EXPECT_EQ(limits.minimumWidth, limits.maximumWidth);
        EXPECT_GT(limits.maximumHeight, 0);
        EXPECT_EQ(limits.minimumHeight, limits.maximumHeight);
    });
}

TEST_F(SettingsWindow, RowsStandInTheMiddleWithEqualRoomAroundThem) {
    whileOpen([&](Gtk::Window& settings) {
        const auto content = program.boxOf(*settings.get_child());
        const auto group = program.boxOf(*withClass(settings, "kelo-group"));
        EXPECT_EQ(group.x - content.x, 16);
        EXPECT_EQ(group.width, content.width - 32);
        const int above = group.y - content.y;
        const int below = content.y + content.height - group.y - group.height;
        EXPECT_LE(std::abs(above - below), 1);
        int rows = 0;
        for (auto* row : visibleIn<Gtk::ListBoxRow>(settings))
            rows += program.boxOf(*row).height;
        EXPECT_LE(group.height - rows, 2) << "as tall as its rows and its border";
    });
}

TEST_F(SettingsWindow, LongValueIsShortenedInItsMiddleAndTheWindowKeepsItsSize) {
    program.app.state->version = "1.4.2-" + std::string(100, '4') + " (57)";
    whileOpen([&](Gtk::Window& settings) {
        EXPECT_EQ(settings.get_child()->get_width(), 360);
        auto& value = label(settings, program.app.state->version);
        EXPECT_TRUE(value.get_layout()->is_ellipsized());
        EXPECT_EQ(value.get_ellipsize(), Pango::EllipsizeMode::MIDDLE);
    });
}

TEST_F(SettingsWindow, ValuesAreFainterThanTheirLabels) {
    whileOpen([&](Gtk::Window& settings) {
        const auto darkest = [&](const std::string& text) {
            const auto box = program.boxOf(label(settings, text));
            int least = 3 * 255;
            for (const Color color : program.screen.colorsIn(box.x, box.y, box.width, box.height))
                least = std::min(least, color.red + color.green + color.blue);
            return least;
        };
        EXPECT_GT(darkest("1.4.2 (57)"), darkest("Version") + 60);
    });
}

TEST_F(SettingsWindow, KeyboardGoesFromRowToRowAndSelectsNoText) {
    whileOpen([&](Gtk::Window& settings) {
        for (int step = 0; step < 4; ++step) {
            EXPECT_EQ(dynamic_cast<Gtk::Label*>(settings.get_focus()), nullptr) << step;
            for (auto* text : visibleIn<Gtk::Label>(settings)) {
                int start = 0;
                int end = 0;
                EXPECT_FALSE(text->get_selection_bounds(start, end)) << text->get_text();
            }
            program.screen.press(GDK_KEY_Tab);
            program.untilDrawn(settings);
        }
    });
}

TEST_F(SettingsWindow, RowsAreNamedAsAGroupAndCannotBeChosen) {
    whileOpen([&](Gtk::Window& settings) {
        auto* group = dynamic_cast<Gtk::ListBox*>(withClass(settings, "kelo-group"));
        ASSERT_NE(group, nullptr);
        EXPECT_TRUE(isNamed(*group, "Settings"));
        program.click(label(settings, "Version"));
        program.untilDrawn(settings);
        EXPECT_EQ(group->get_selected_row(), nullptr);
    });
}

TEST_F(SettingsWindow, ValuesCanBeCopiedAndNothingCanBeChanged) {
    whileOpen([&](Gtk::Window& settings) {
        EXPECT_TRUE(label(settings, "1.4.2 (57)").get_selectable());
        EXPECT_TRUE(label(settings, "assistant.example.com").get_selectable());
        EXPECT_EQ(visibleIn<Gtk::Text>(settings).size(), 0U);
        const auto rows = visibleIn<Gtk::ListBoxRow>(settings);
        ASSERT_EQ(rows.size(), 2U);
        for (const auto* row : rows)
            EXPECT_FALSE(row->get_activatable());
    });
}

TEST_F(SettingsWindow, OpensOnceAndIsRaisedAfterwards) {
    whileOpen([&](Gtk::Window& settings) {
        program.host.openWindow("main");
        program.untilActive(program.window("Kelo"));
        program.host.openSettings();
        program.untilActive(settings);
        EXPECT_EQ(program.windowsOnScreen().size(), 2U);
    });
}

TEST_F(SettingsWindow, EscapeClosesItAndItOpensAgain) {
    whileOpen([&](Gtk::Window&) {
        program.screen.press(GDK_KEY_Escape);
        untilClosed();
        EXPECT_EQ(program.host.windows().size(), 1U);
        program.host.openSettings();
        program.untilActive(program.window("Settings"));
    });
}

TEST_F(SettingsWindow, OtherKeysLeaveItOpen) {
    whileOpen([&](Gtk::Window& settings) {
        program.screen.press(GDK_KEY_a);
        program.screen.press(GDK_KEY_Return);
        program.untilDrawn(settings);
        EXPECT_TRUE(settings.get_mapped());
    });
}

TEST_F(SettingsWindow, FollowsWhatItShows) {
    whileOpen([&](Gtk::Window& settings) {
        program.app.state->version = "1.5 (60)";
        RunningProgram::settle();
        EXPECT_EQ(
            textsIn(*settings.get_child()),
            (std::vector<std::string>{"Version", "1.5 (60)", "Backend", "assistant.example.com"}));
    });
}

TEST_F(SettingsWindow, IsTheMainWindowsAndKeyWhileItHasTheKeyboard) {
    whileOpen([&](Gtk::Window& settings) {
        EXPECT_EQ(settings.get_transient_for(), &program.window("Kelo"));
        const auto windows = program.host.windows();
        ASSERT_EQ(windows.size(), 2U);
        EXPECT_EQ(program.host.keyWindow(), windows.front());
        EXPECT_EQ(gtk::WindowHandle::resolve(windows.front()), &settings);
    });
}

TEST_F(SettingsWindow, OutlivesTheMainWindowAndIsTheLastOneThen) {
    program.app.terminatesAfterLastWindow = true;
    program.runToItsOwnEnd([&] {
        program.host.openSettings();
        auto& settings = program.window("Settings");
        program.untilActive(settings);
        program.window("Kelo").close();
        RunningProgram::settle();
        EXPECT_TRUE(settings.get_mapped());
        settings.close();
    });
    EXPECT_EQ(program.status, 0);
}

TEST_F(SettingsWindow, RingAroundARowFollowsTheRoundedGroup) {
    whileOpen([&](Gtk::Window& settings) {
        const auto box = program.boxOf(*withClass(settings, "kelo-group"));
        const auto corner = [&] { return program.screen.colorsIn(box.x, box.y, 2, 2); };
        const auto edge = [&] {
            return program.screen.colorsIn(box.x + box.width / 2, box.y, 4, 4);
        };
        settings.unset_focus();
        program.untilDrawn(settings);
        const auto cornerWithout = corner();
        const auto edgeWithout = edge();
        program.screen.press(GDK_KEY_Tab);
        RunningProgram::until("the ring is drawn", [&] { return edge() != edgeWithout; });
        EXPECT_EQ(corner(), cornerWithout);
    });
}

} // namespace
} // namespace kelo::tests
