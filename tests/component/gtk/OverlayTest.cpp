#include "component/gtk/OverlayFixture.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/label.h>

#include <cmath>

namespace kelo::tests {
namespace {

using Overlay = OverlayFixture;

TEST_F(Overlay, IsThereOnlyWhileTheDescriptionHasIt) {
    program.run([&] {
        EXPECT_EQ(panel(), nullptr);
        program.app.state->onLogin = true;
        draw();
        EXPECT_NE(panel(), nullptr);
        program.app.state->onLogin = false;
        draw();
        EXPECT_EQ(panel(), nullptr);
    });
}

TEST_F(Overlay, FloatsWithTheDescribedDistances) {
    whileOnLogin([&] {
        const auto page = program.boxOf(program.app.page->area);
        const auto box = program.boxOf(*panel());
        const auto button = program.boxOf(*signIn());
        EXPECT_EQ(page.y + page.height - (box.y + box.height), 28);
        EXPECT_LE(std::abs((box.x - page.x) - (page.x + page.width - box.x - box.width)), 1);
        EXPECT_EQ(button.x - box.x, 16);
        EXPECT_EQ(button.y - box.y, 16);
        EXPECT_EQ(box.x + box.width - button.x - button.width, 16);
        EXPECT_EQ(box.y + box.height - button.y - button.height, 16);
    });
}

TEST_F(Overlay, IsOnTheScreenWhereItSaysItIs) {
    whileOnLogin([&] {
        const auto page = program.boxOf(program.app.page->area);
        const auto box = program.boxOf(*panel());
        const int middle = page.x + page.width / 2;
        // Also where the panel's shadow falls on it.
        const auto isPage = [&](int x, int y) {
            const auto color = program.screen.colorAt(x, y);
            return color.green == 0 && color.red > 180;
        };
        int below = 0;
        while (below < page.height && isPage(middle, page.y + page.height - 1 - below))
            ++below;
        EXPECT_EQ(below, 28);
        const int height = box.y + box.height / 2;
        EXPECT_TRUE(isPage(box.x - 1, height));
        EXPECT_FALSE(isPage(box.x + 1, height));
        EXPECT_TRUE(isPage(box.x + box.width, height));
        // A radius of 12: on the diagonal the panel begins 3.5 pixels from the corner.
        EXPECT_TRUE(isPage(box.x + 2, box.y + 2));
        EXPECT_FALSE(isPage(box.x + 4, box.y + 4));
        EXPECT_TRUE(isPage(box.x + 6, box.y));
        EXPECT_FALSE(isPage(box.x + 13, box.y));
    });
}

TEST_F(Overlay, LabelTakesThreeHundredAndTwentyPointsAlsoInAWideWindow) {
    whileOnLogin([&] {
        const auto labelWidth = [&] { return signIn()->get_child()->get_width(); };
        EXPECT_EQ(labelWidth(), 320);
        main().maximize();
        RunningProgram::until("the window is wide",
                              [&] { return program.app.page->area.get_width() > 1200; });
        draw();
        EXPECT_EQ(labelWidth(), 320);
        const auto page = program.boxOf(program.app.page->area);
        const auto box = program.boxOf(*panel());
        EXPECT_LE(std::abs((box.x - page.x) - (page.x + page.width - box.x - box.width)), 1);
        EXPECT_EQ(page.y + page.height - (box.y + box.height), 28);
    });
}

TEST_F(Overlay, PageTakesInputEverywhereButUnderThePanel) {
    whileOnLogin([&] {
        const auto box = program.boxOf(*panel());
        const int height = box.y + box.height / 2;
        for (const int x : {box.x - 5, box.x + box.width + 5})
            program.screen.click(x, height);
        program.screen.click(box.x + box.width / 2, box.y + box.height + 10);
        RunningProgram::until("the page was clicked",
                              [&] { return program.app.page->clicks == 3; });
        program.screen.click(box.x + 5, height); // the padding is the panel's
        program.click(*signIn());
        RunningProgram::until("the button was pressed",
                              [&] { return program.app.count("sign in") == 1; });
        EXPECT_EQ(program.app.page->clicks, 3);
    });
}

TEST_F(Overlay, LeavesTheKeyboardToThePageAndComesAfterIt) {
    whileOnLogin([&] {
        EXPECT_TRUE(program.app.page->area.has_focus());
        program.screen.press(GDK_KEY_Tab);
        RunningProgram::until("the button has the focus", [&] { return signIn()->has_focus(); });
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("Enter pressed it",
                              [&] { return program.app.count("sign in") == 1; });
    });
}

TEST_F(Overlay, BusyButtonSaysSoAndCannotBePressed) {
    whileOnLogin([&] {
        program.app.state->busy = true;
        draw();
        EXPECT_EQ(signIn(), nullptr);
        auto* waiting = buttonNamed(main(), "Waiting for passkey…");
        ASSERT_NE(waiting, nullptr);
        EXPECT_FALSE(waiting->is_sensitive());
        program.click(*waiting);
        const auto page = program.boxOf(program.app.page->area);
        program.screen.click(page.x + 10, page.y + 10);
        RunningProgram::until("the later click came",
                              [&] { return program.app.page->clicks == 1; });
        program.app.state->busy = false;
        draw();
        EXPECT_TRUE(signIn()->is_sensitive());
        EXPECT_EQ(program.app.count("sign in"), 0);
    });
}

TEST_F(Overlay, PressedWithTheKeyboardItGetsTheFocusBackAfterwards) {
    whileOnLogin([&] {
        signIn()->grab_focus();
        program.app.state->busy = true;
        draw();
        program.app.state->busy = false;
        draw();
        EXPECT_TRUE(signIn()->has_focus());
    });
}

TEST_F(Overlay, PressedWithTheKeyboardItLeavesTheFocusWhereTheUserWentMeanwhile) {
    whileOnLogin([&] {
        signIn()->grab_focus();
        program.app.state->busy = true;
        draw();
        program.app.page->area.grab_focus();
        program.app.state->busy = false;
        draw();
        EXPECT_TRUE(program.app.page->area.has_focus());
    });
}

TEST_F(Overlay, GoneWithTheFocusItLeavesItToThePage) {
    whileOnLogin([&] {
        signIn()->grab_focus();
        program.app.state->onLogin = false;
        draw();
        EXPECT_TRUE(program.app.page->area.has_focus());
    });
}

TEST_F(Overlay, ErrorStandsSixPointsBelowTheButtonAndIsAnnounced) {
    whileOnLogin([&] {
        program.app.state->error = "Cancelled.";
        draw();
        auto* text = dynamic_cast<Gtk::Label*>(withClass(main(), "kelo-red"));
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->get_text(), "Cancelled.");
        EXPECT_TRUE(text->has_css_class("kelo-caption"));
        const auto button = program.boxOf(*signIn());
        const auto box = program.boxOf(*text);
        EXPECT_EQ(box.y - (button.y + button.height), 6);
        EXPECT_EQ(program.boxOf(*panel()).y + program.boxOf(*panel()).height - box.y - box.height,
                  16);
        EXPECT_TRUE(
            gtk_test_accessible_has_role(GTK_ACCESSIBLE(text->gobj()), GTK_ACCESSIBLE_ROLE_ALERT));
        program.app.state->error = std::nullopt;
        draw();
        EXPECT_EQ(withClass(main(), "kelo-red"), nullptr);
    });
}

TEST_F(Overlay, EmptyErrorStillTakesItsLine) {
    whileOnLogin([&] {
        const int before = panel()->get_height();
        program.app.state->error = "";
        draw();
        EXPECT_GT(panel()->get_height(), before);
    });
}

TEST_F(Overlay, LongErrorWrapsAndKeepsItsDistanceFromTheEdge) {
    whileOnLogin([&] {
        std::string text;
        for (int word = 0; word < 60; ++word)
            text += "certificate ";
        program.app.state->error = text;
        draw();
        const auto page = program.boxOf(program.app.page->area);
        const auto box = program.boxOf(*panel());
        EXPECT_LT(box.width, 600);
        EXPECT_EQ(page.y + page.height - (box.y + box.height), 28);
        auto* label = dynamic_cast<Gtk::Label*>(withClass(main(), "kelo-red"));
        ASSERT_NE(label, nullptr);
        EXPECT_GT(label->get_layout()->get_line_count(), 5);
        EXPECT_EQ(label->get_justify(), Gtk::Justification::CENTER);
    });
}

TEST_F(Overlay, WordTooLongForALineIsBroken) {
    whileOnLogin([&] {
        program.app.state->error = std::string(200, 'x');
        draw();
        EXPECT_LT(program.boxOf(*panel()).width, 600);
    });
}

TEST_F(Overlay, EndlessErrorIsCutAndLeavesThePageInSight) {
    whileOnLogin([&] {
        program.app.state->error = std::string(100'000, 'x');
        draw();
        EXPECT_LT(program.boxOf(*panel()).height, program.boxOf(main()).height / 2);
        EXPECT_TRUE(signIn());
    });
}

TEST_F(Overlay, ButtonDoesNotGrowWithALongErrorAndStaysInTheMiddle) {
    whileOnLogin([&] {
        drawAs([](auto& overlay) { overlay.button.labelMaximumWidth = 190; });
        const int width = program.boxOf(*signIn()).width;
        program.app.state->error = "Could not connect to assistant.example.com. Try again later.";
        draw();
        const auto box = program.boxOf(*panel());
        const auto button = program.boxOf(*signIn());
        EXPECT_GT(box.width, width + 32);
        EXPECT_EQ(button.width, width);
        EXPECT_LE(std::abs(2 * (button.x - box.x) + button.width - box.width), 1);
    });
}

} // namespace
} // namespace kelo::tests
