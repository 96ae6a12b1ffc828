#include "component/gtk/PageFixture.h"

#include <gdk/gdkkeysyms.h>
#include <gmock/gmock.h>
#include <gtkmm/label.h>
#include <gtkmm/searchentry.h>

namespace kelo::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// Finding a text in the page.
class FindBar : public PageFixture {
protected:
    std::vector<std::string>& done() { return page().pageControls.done; }
    Gtk::SearchEntry* entry() {
        const auto entries = visibleIn<Gtk::SearchEntry>(main());
        return entries.empty() ? nullptr : entries.front();
    }
    void open() {
        untilPageHasKeyboard();
        program.screen.press(GDK_KEY_f, {GDK_KEY_Control_L});
        RunningProgram::until("the bar has the keyboard", [&] {
            return entry() && main().get_focus() && main().get_focus()->is_ancestor(*entry());
        });
    }
    void find(const std::string& text) {
        program.screen.type(text);
        RunningProgram::until("it is looked for",
                              [&] { return !done().empty() && done().back() == "find " + text; });
    }
};

TEST_F(FindBar, CountsThePlacesAndLeadsFromOneToTheNext) {
    program.run([&] {
        open();
        find("abc");
        EXPECT_THAT(textsIn(main()), Contains("3 places"));
        done().clear();
        program.screen.press(GDK_KEY_Return);
        program.screen.press(GDK_KEY_Return, {GDK_KEY_Shift_L});
        program.screen.press(GDK_KEY_g, {GDK_KEY_Control_L});
        program.screen.press(GDK_KEY_F3, {GDK_KEY_Shift_L});
        RunningProgram::until("all is done", [&] { return done().size() >= 4; });
        EXPECT_THAT(done(), ElementsAre("next", "previous", "next", "previous"));
        pressButton("Next");
        pressButton("Previous");
        RunningProgram::until("the buttons ran", [&] { return done().size() >= 6; });
        EXPECT_EQ(done()[4], "next");
        EXPECT_EQ(done()[5], "previous");
    });
}

TEST_F(FindBar, SaysThatATextIsMissing) {
    program.run([&] {
        page().pageControls.places = 0;
        open();
        find("abc");
        EXPECT_THAT(textsIn(main()), Contains("Not found"));
        EXPECT_FALSE(buttonNamed(main(), "Next")->get_sensitive());
        page().pageControls.places = 1;
        program.screen.press(GDK_KEY_BackSpace);
        RunningProgram::until("it is looked for", [&] { return done().back() == "find ab"; });
        EXPECT_THAT(textsIn(main()), Contains("1 place"));
        EXPECT_TRUE(buttonNamed(main(), "Next")->get_sensitive());
    });
}

TEST_F(FindBar, EscapeClosesItAndGivesTheKeyboardToThePage) {
    program.run([&] {
        untilPageHasKeyboard();
        const auto upper = program.boxOf(page().area).y;
        open();
        find("abc");
        // Nothing so far has waited for the layout: the keyboard comes before it.
        RunningProgram::until("the bar is above the page",
                              [&] { return program.boxOf(page().area).y > upper; });
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the bar is gone", [&] { return !entry(); });
        EXPECT_EQ(done().back(), "end");
        untilPageHasKeyboard();
        RunningProgram::until("the page has the bar's place",
                              [&] { return program.boxOf(page().area).y == upper; });
    });
}

TEST_F(FindBar, OpenedAgainItOffersTheFormerTextToBeReplaced) {
    program.run([&] {
        open();
        find("abc");
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the bar is gone", [&] { return !entry(); });
        open();
        RunningProgram::until("it is looked for again",
                              [&] { return done().back() == "find abc"; });
        find("d");
        EXPECT_EQ(entry()->get_text(), "d");
    });
}

TEST_F(FindBar, KeyForTheNextPlaceOpensItFirst) {
    program.run([&] {
        untilPageHasKeyboard();
        program.screen.press(GDK_KEY_g, {GDK_KEY_Control_L});
        RunningProgram::until("the bar is open", [&] { return entry() != nullptr; });
        EXPECT_THAT(done(), Not(Contains("next")));
    });
}

TEST_F(FindBar, OpenedFromTheMenuHasTheKeyboard) {
    program.run([&] {
        untilPageHasKeyboard();
        program.click(*labelSaying(main(), "View"));
        RunningProgram::until("the menu is open",
                              [&] { return labelSaying(main(), "Find…") != nullptr; });
        program.click(*labelSaying(main(), "Find…"));
        RunningProgram::until("the bar is open",
                              [&] { return entry() && !labelSaying(main(), "Find…"); });
        RunningProgram::settle();
        ASSERT_TRUE(main().get_focus());
        EXPECT_TRUE(main().get_focus()->is_ancestor(*entry()));
    });
}

} // namespace
} // namespace kelo::tests
