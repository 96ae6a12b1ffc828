#include "component/gtk/PageFixture.h"

#include <algorithm>

namespace kelo::tests {
namespace {

/// A page in the main window that does not answer.
class HungPage : public PageFixture {
protected:
    void hang() {
        untilPageHasKeyboard();
        page().setHangs(true);
        RunningProgram::settle();
        program.untilDrawn(main());
    }
    void untilBarIsGone() {
        RunningProgram::until("the bar is gone", [&] { return !bar(); });
    }
};

TEST_F(HungPage, HasABarAsLongAsItDoesNotAnswer) {
    program.run([&] {
        EXPECT_FALSE(bar());
        hang();
        ASSERT_TRUE(bar());
        EXPECT_TRUE(isNamed(*bar(), "This page does not answer."));
        EXPECT_TRUE(
            gtk_test_accessible_has_role(GTK_ACCESSIBLE(bar()->gobj()), GTK_ACCESSIBLE_ROLE_ALERT));
        EXPECT_EQ(std::ranges::count(textsIn(main()), "This page does not answer."), 1);
        EXPECT_TRUE(page().area.has_focus()) << "the bar took the keyboard by itself";
        page().setHangs(false);
        EXPECT_FALSE(bar());
    });
}

TEST_F(HungPage, LiesBelowTheBarAndIsNotMoved) {
    program.run([&] {
        const auto before = program.boxOf(page().area);
        hang();
        EXPECT_EQ(program.boxOf(page().area), before);
        const auto shown = program.boxOf(*bar());
        EXPECT_EQ(shown.x, before.x);
        EXPECT_EQ(shown.y, before.y);
        EXPECT_EQ(shown.width, before.width);
        EXPECT_LT(shown.height, 48);
    });
}

TEST_F(HungPage, OfAnotherHostHasBothBars) {
    program.run([&] {
        hang();
        page().setForeignHost("accounts.example.com");
        RunningProgram::settle();
        program.untilDrawn(main());
        auto* const back = buttonNamed(main(), "Back to Kelo");
        auto* const reload = buttonNamed(main(), "Reload");
        ASSERT_TRUE(back && reload);
        const auto upper = program.boxOf(*back);
        EXPECT_GE(program.boxOf(*reload).y, upper.y + upper.height);
        pressButton("Back to Kelo");
        RunningProgram::until("the page is left", [&] { return page().returns == 1; });
    });
}

TEST_F(HungPage, IsLoadedAgainByTheButtonAndHasTheKeyboard) {
    program.run([&] {
        hang();
        pressButton("Reload");
        RunningProgram::until("it is loaded again", [&] { return page().reloads == 1; });
        EXPECT_FALSE(bar());
        untilPageHasKeyboard();
    });
}

TEST_F(HungPage, IsLoadedAgainByKeys) {
    program.run([&] {
        hang();
        program.screen.press(GDK_KEY_F6);
        RunningProgram::until("the bar has the keyboard",
                              [&] { return buttonNamed(main(), "Wait")->has_focus(); });
        program.screen.press(GDK_KEY_Tab);
        program.screen.press(GDK_KEY_space);
        RunningProgram::until("it is loaded again", [&] { return page().reloads == 1; });
    });
}

TEST_F(HungPage, IsWaitedForUntilTheUserTriesItInVain) {
    program.run([&] {
        hang();
        pressButton("Wait");
        untilBarIsGone();
        EXPECT_EQ(page().reloads, 0);
        untilPageHasKeyboard();
        program.click(page().area);
        RunningProgram::until("the bar is back", [&] { return bar() != nullptr; });
        pressButton("Wait");
        untilBarIsGone();
        program.screen.press(GDK_KEY_a);
        RunningProgram::until("the bar is back", [&] { return bar() != nullptr; });
    });
}

TEST_F(HungPage, ThatAnsweredInTheMeantimeHasABarWhenItHangsAgain) {
    program.run([&] {
        hang();
        pressButton("Wait");
        untilBarIsGone();
        page().setHangs(false);
        EXPECT_FALSE(bar());
        page().setHangs(true);
        EXPECT_TRUE(bar());
    });
}

TEST_F(HungPage, HasItsBarInTheNextWindow) {
    program.run([&] {
        main().close();
        page().setHangs(true);
        program.host.openWindow("main");
        RunningProgram::until("it appears again", [&] { return program.app.count("appear") == 2; });
        EXPECT_TRUE(bar());
        EXPECT_EQ(page().returns, 0);
    });
}

TEST_F(HungPage, NeitherKeepsItsWindowNorTheProgram) {
    program.runToItsOwnEnd([&] {
        hang();
        program.screen.press(GDK_KEY_w, {GDK_KEY_Control_L});
        RunningProgram::until("no window is open",
                              [&] { return Gtk::Window::list_toplevels().empty(); });
        program.host.terminate();
    });
    EXPECT_EQ(program.status, 0);
}

} // namespace
} // namespace kelo::tests
