#include "component/gtk/PageFixture.h"

#include <gtkmm/label.h>

#include <algorithm>

namespace kelo::tests {
namespace {

/// A page of another host in the main window.
class ForeignPage : public PageFixture {
protected:
    void show(const std::string& host) {
        page().setForeignHost(host);
        RunningProgram::settle();
        program.untilDrawn(main());
    }
};

TEST_F(ForeignPage, IsNamedByABarWhileItIsShown) {
    program.run([&] {
        EXPECT_FALSE(bar());
        show("accounts.example.com");
        ASSERT_TRUE(bar());
        EXPECT_TRUE(isNamed(*bar(), "This page is from accounts.example.com"));
        EXPECT_TRUE(
            gtk_test_accessible_has_role(GTK_ACCESSIBLE(bar()->gobj()), GTK_ACCESSIBLE_ROLE_GROUP));
        const auto texts = textsIn(*bar());
        EXPECT_EQ(std::ranges::count(texts, "This page is from"), 1);
        EXPECT_EQ(std::ranges::count(texts, "accounts.example.com"), 1);
        show("other.example.com");
        EXPECT_TRUE(isNamed(*bar(), "This page is from other.example.com"));
        page().setForeignHost(std::nullopt);
        EXPECT_FALSE(bar());
    });
}

TEST_F(ForeignPage, WithoutAHostIsSaidToBeFromAnotherSite) {
    program.run([&] {
        show("");
        ASSERT_TRUE(bar());
        EXPECT_TRUE(isNamed(*bar(), "This page is from another site"));
    });
}

TEST_F(ForeignPage, LiesBelowTheBarAndIsNotCovered) {
    program.run([&] {
        const auto before = program.boxOf(page().area);
        show("accounts.example.com");
        const auto shown = program.boxOf(*bar());
        EXPECT_EQ(shown.x, before.x);
        EXPECT_EQ(shown.y, before.y);
        EXPECT_EQ(shown.width, before.width);
        EXPECT_LT(shown.height, 48);
        const auto rest = program.boxOf(page().area);
        EXPECT_EQ(rest.y, shown.y + shown.height);
        EXPECT_EQ(rest.height, before.height - shown.height);
        page().setForeignHost(std::nullopt);
        RunningProgram::settle();
        program.untilDrawn(main());
        EXPECT_EQ(program.boxOf(page().area), before);
    });
}

TEST_F(ForeignPage, LongHostLosesItsBeginningAndMovesNoButton) {
    program.run([&] {
        show("a.example");
        auto* const button = buttonNamed(main(), "Open in Browser");
        ASSERT_TRUE(button);
        const auto before = program.boxOf(*button);
        std::string host;
        for (int part = 0; part < 40; ++part)
            host += "service.example.";
        show(host + "evil.example");
        EXPECT_EQ(program.boxOf(*button), before);
        for (auto* label : visibleIn<Gtk::Label>(*bar()))
            if (label->get_text() == Glib::ustring(host + "evil.example")) {
                EXPECT_TRUE(label->get_layout()->is_ellipsized());
                EXPECT_EQ(label->get_ellipsize(), Pango::EllipsizeMode::START);
            }
    });
}

TEST_F(ForeignPage, IsLeftByTheButtonAndThePageHasTheKeyboardAgain) {
    program.run([&] {
        show("accounts.example.com");
        pressButton("Back to Kelo");
        RunningProgram::until("the page is left", [&] { return page().returns == 1; });
        EXPECT_FALSE(bar());
        untilPageHasKeyboard();
    });
}

TEST_F(ForeignPage, OpensInTheBrowserByTheButtonAndStays) {
    program.run([&] {
        show("accounts.example.com");
        pressButton("Open in Browser");
        RunningProgram::until("it is opened", [&] { return page().openings == 1; });
        EXPECT_TRUE(bar());
        EXPECT_EQ(page().returns, 0);
    });
}

TEST_F(ForeignPage, BarIsReachedByKeysAndLeftByThem) {
    program.run([&] {
        untilPageHasKeyboard();
        show("accounts.example.com");
        EXPECT_TRUE(page().area.has_focus()) << "the bar took the keyboard by itself";
        program.screen.press(GDK_KEY_F6);
        RunningProgram::until("the bar has the keyboard",
                              [&] { return buttonNamed(main(), "Back to Kelo")->has_focus(); });
        program.screen.press(GDK_KEY_F6);
        untilPageHasKeyboard();
        program.screen.press(GDK_KEY_F6);
        program.screen.press(GDK_KEY_Tab);
        RunningProgram::until("the second button has the keyboard",
                              [&] { return buttonNamed(main(), "Open in Browser")->has_focus(); });
        program.screen.press(GDK_KEY_space);
        RunningProgram::until("it is opened", [&] { return page().openings == 1; });
    });
}

TEST_F(ForeignPage, KeyIsThePagesWhileThereIsNoBar) {
    program.run([&] {
        untilPageHasKeyboard();
        program.screen.press(GDK_KEY_F6);
        RunningProgram::settle();
        EXPECT_TRUE(page().area.has_focus());
    });
}

TEST_F(ForeignPage, IsNeverCoveredByTheSignInPanel) {
    program.run([&] {
        program.app.state->onLogin = true;
        RunningProgram::settle();
        EXPECT_TRUE(withClass(main(), "kelo-overlay"));
        page().setForeignHost("accounts.example.com");
        EXPECT_FALSE(withClass(main(), "kelo-overlay"));
        program.app.state->error = "No.";
        RunningProgram::settle();
        EXPECT_FALSE(withClass(main(), "kelo-overlay"));
        page().setForeignHost(std::nullopt);
        EXPECT_TRUE(withClass(main(), "kelo-overlay"));
    });
}

TEST_F(ForeignPage, IsLeftWhenItsWindowIsClosed) {
    program.run([&] {
        show("accounts.example.com");
        main().close();
        EXPECT_EQ(page().returns, 1);
    });
}

TEST_F(ForeignPage, ThatCameWithoutAWindowIsLeftByTheNext) {
    program.run([&] {
        main().close();
        EXPECT_EQ(page().returns, 0) << "a page of the service stays";
        page().setForeignHost("accounts.example.com");
        program.host.openWindow("main");
        RunningProgram::until("it appears again", [&] { return program.app.count("appear") == 2; });
        EXPECT_EQ(page().returns, 1);
        EXPECT_FALSE(bar());
    });
}

} // namespace
} // namespace kelo::tests
