#include "component/gtk/PageFixture.h"
#include "linux/gobject/SignalHandler.h"

#include <gmock/gmock.h>
#include <gtkmm/progressbar.h>

#include <algorithm>
#include <chrono>

namespace kelo::tests {
namespace {

using namespace std::chrono_literals;
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
    struct Frames {
        int count = 0;
        std::chrono::steady_clock::time_point last = std::chrono::steady_clock::now();
    };
    void untilLoadBar() {
        RunningProgram::until("the bar of the load is shown",
                              [this] { return loadBar() != nullptr; });
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
        untilLoadBar();
        program.untilDrawn(main());
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

TEST_F(TitleBar, BarOfALoadIsWaitedForWithoutDrawingTheWindow) {
    program.run([&] {
        untilPageHasKeyboard();
        Frames frames;
        const auto counted = gobject::connectSignal(
            gtk_widget_get_frame_clock(GTK_WIDGET(main().gobj())), "before-paint",
            +[](GdkFrameClock*, Frames* frames) {
                ++frames->count;
                frames->last = std::chrono::steady_clock::now();
            },
            &frames);
        // What the arrival of the window has begun ends first.
        RunningProgram::until("the window is drawn no more", [&] {
            return std::chrono::steady_clock::now() - frames.last > 200ms;
        });
        frames.count = 0;
        const auto start = std::chrono::steady_clock::now();
        double progress = 0.25;
        // More of the page does not make the wait longer or shorter.
        RunningProgram::until("the bar of a page that arrives bit by bit", [&] {
            page().pageControls.setLoadProgress(progress += 0.0001);
            return loadBar() != nullptr;
        });
        EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
        EXPECT_LE(frames.count, 3) << "300 ms are 18 frames";
    });
}

TEST_F(TitleBar, BarOfALoadThatWasQuickIsNeverShown) {
    program.run([&] {
        page().pageControls.setLoadProgress(0.25);
        page().pageControls.setLoadProgress(std::nullopt);
        const auto start = std::chrono::steady_clock::now();
        bool shown = false;
        RunningProgram::until("longer has passed than a bar waits", [&] {
            shown = shown || loadBar() != nullptr;
            return std::chrono::steady_clock::now() - start > 400ms;
        });
        EXPECT_FALSE(shown);
    });
}

TEST_F(TitleBar, BarOfALoadLiesBelowTheBarOfAForeignPageAndTakesNoClick) {
    program.run([&] {
        page().setForeignHost("accounts.example.com");
        page().pageControls.setLoadProgress(0.5);
        untilLoadBar();
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
