#include "component/gtk/PageFixture.h"

#include <gmock/gmock.h>
#include <gtkmm/progressbar.h>

#include <algorithm>

namespace kelo::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// What the main window says of its page above it.
class TitleBar : public PageFixture {
protected:
    /// The window by what others see of it, whatever its title is now.
    Gtk::Window& shown() { return *program.windowsOnScreen().front(); }
    bool isBold(const std::string& text) {
        return std::ranges::any_of(visibleIn<Gtk::Label>(shown()), [&](const Gtk::Label* label) {
            return label->get_text() == text.c_str() && label->has_css_class("title");
        });
    }
    Gtk::ProgressBar* loadBar() {
        const auto bars = visibleIn<Gtk::ProgressBar>(shown());
        return bars.empty() ? nullptr : bars.front();
    }
};

TEST_F(TitleBar, NamesThePageAndTheWindowNamesTheProgramAsWell) {
    program.run([&] {
        page().pageControls.setTitle("Inbox (3)");
        EXPECT_EQ(shown().get_title(), "Inbox (3) – Kelo");
        EXPECT_TRUE(isBold("Inbox (3)"));
        EXPECT_THAT(textsIn(shown()), Not(Contains("Inbox (3) – Kelo")));
        page().pageControls.setTitle("");
        EXPECT_EQ(shown().get_title(), "Kelo");
        EXPECT_FALSE(isBold("Kelo")) << "the menu says it already";
    });
}

TEST_F(TitleBar, DoesNotNameTheProgramTwice) {
    program.run([&] {
        page().pageControls.setTitle("Kelo");
        EXPECT_EQ(shown().get_title(), "Kelo");
        EXPECT_FALSE(isBold("Kelo"));
        page().pageControls.setTitle("Kelo cannot reach localhost");
        EXPECT_EQ(shown().get_title(), "Kelo cannot reach localhost");
        EXPECT_TRUE(isBold("Kelo cannot reach localhost"));
    });
}

TEST_F(TitleBar, ShowsATitleOnOneLineWithoutWhatTurnsItAround) {
    program.run([&] {
        page().pageControls.setTitle("  two\nlines\u202e and more ");
        EXPECT_EQ(shown().get_title(), "two lines and more – Kelo");
    });
}

TEST_F(TitleBar, NamesTheHostOfAForeignPageOnly) {
    program.run([&] {
        page().pageControls.setTitle("Your bank");
        EXPECT_FALSE(withClass(shown(), "subtitle"));
        page().setForeignHost("accounts.example.com");
        auto* const host = dynamic_cast<Gtk::Label*>(withClass(shown(), "subtitle"));
        ASSERT_TRUE(host);
        EXPECT_EQ(host->get_text(), "accounts.example.com");
        page().setForeignHost(std::nullopt);
        EXPECT_FALSE(withClass(shown(), "subtitle"));
    });
}

TEST_F(TitleBar, ButtonsLeadBackAndLoadAgainAndLeaveTheKeyboardToThePage) {
    program.run([&] {
        untilPageHasKeyboard();
        auto* const back = buttonNamed(main(), "Back");
        auto* const reload = buttonNamed(main(), "Reload");
        ASSERT_TRUE(back && reload);
        EXPECT_FALSE(back->get_sensitive());
        page().pageControls.setHistory(true, false);
        EXPECT_TRUE(back->get_sensitive());
        program.click(*back);
        RunningProgram::until("it led back", [&] { return !page().pageControls.done.empty(); });
        EXPECT_THAT(page().pageControls.done, ElementsAre("back"));
        program.click(*reload);
        RunningProgram::until("it loaded again", [&] { return page().reloads == 1; });
        EXPECT_TRUE(page().area.has_focus());
    });
}

TEST_F(TitleBar, ALongTitleMakesTheWindowNoWider) {
    program.run([&] {
        const int before = main().get_width();
        page().pageControls.setTitle(std::string(64, 'W'));
        page().setForeignHost(std::string(200, 'w') + ".example");
        program.untilDrawn(shown());
        EXPECT_EQ(shown().get_width(), before);
    });
}

TEST_F(TitleBar, HasABarBelowItWhileAPageIsOnItsWay) {
    program.run([&] {
        EXPECT_FALSE(loadBar());
        const auto before = program.boxOf(page().area);
        page().pageControls.setLoadProgress(0.25);
        program.untilDrawn(main());
        ASSERT_TRUE(loadBar());
        EXPECT_DOUBLE_EQ(loadBar()->get_fraction(), 0.25);
        const auto place = program.boxOf(*loadBar());
        EXPECT_EQ(place.y, before.y);
        EXPECT_EQ(place.width, before.width);
        EXPECT_LE(place.height, 4);
        EXPECT_EQ(program.boxOf(page().area), before) << "the page stays where it is";
        page().pageControls.setLoadProgress(7);
        EXPECT_DOUBLE_EQ(loadBar()->get_fraction(), 1);
        page().pageControls.setLoadProgress(std::nullopt);
        EXPECT_FALSE(loadBar());
    });
}

TEST_F(TitleBar, BarOfALoadLiesBelowTheBarOfAForeignPageAndTakesNoClick) {
    program.run([&] {
        page().setForeignHost("accounts.example.com");
        page().pageControls.setLoadProgress(0.5);
        program.untilDrawn(main());
        const auto notice = program.boxOf(*bar());
        const auto place = program.boxOf(*loadBar());
        EXPECT_EQ(place.y, notice.y + notice.height);
        program.screen.click(place.x + place.width / 2, place.y + 1);
        RunningProgram::until("the page was clicked", [&] { return page().clicks == 1; });
    });
}

} // namespace
} // namespace kelo::tests
