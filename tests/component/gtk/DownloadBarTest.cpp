#include "component/gtk/DownloadFixture.h"

#include <gdk/gdkkeysyms.h>
#include <gmock/gmock.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/progressbar.h>
#include <gtkmm/scrolledwindow.h>

namespace kelo::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class DownloadBar : public DownloadFixture {
protected:
    void untilSaid(const std::string& text) {
        RunningProgram::until("the bar says " + text,
                              [&] { return labelSaying(main(), text) != nullptr; });
    }
    /// By the key, when there is a download of "report.pdf".
    void goThere() {
        program.untilDrawn(main());
        program.screen.press(GDK_KEY_F6);
        RunningProgram::until("the bar has the keyboard",
                              [&] { return hasKeyboard("Cancel report.pdf"); });
    }
    bool hasKeyboard(const std::string& button) {
        auto* const found = buttonNamed(main(), button);
        return found && found->has_focus();
    }
};

TEST_F(DownloadBar, IsThereWhileThereAreDownloads) {
    run([&] {
        EXPECT_FALSE(bar());
        const auto page = program.boxOf(program.app.page->area);
        const unsigned report = begin("report.pdf");
        RunningProgram::until("the bar is there", [&] { return bar() != nullptr; });
        RunningProgram::settle();
        program.untilDrawn(main());
        EXPECT_LT(program.boxOf(program.app.page->area).height, page.height);
        EXPECT_EQ(program.boxOf(program.app.page->area).y, page.y);
        finish(report, "report.pdf");
        EXPECT_TRUE(bar());
        pressButton("Close");
        RunningProgram::until("the bar is gone", [&] { return !bar(); });
        EXPECT_THAT(list->all(), IsEmpty());
    });
}

TEST_F(DownloadBar, ShowsHowMuchHasArrived) {
    run([&] {
        list->progress(begin("report.pdf"), 3'100'000, 12'400'000);
        EXPECT_THAT(textsIn(main()), Contains("report.pdf"));
        untilSaid("3.1\u00a0MB of 12.4\u00a0MB");
        EXPECT_DOUBLE_EQ(visibleIn<Gtk::ProgressBar>(*bar()).at(0)->get_fraction(), 0.25);
    });
}

TEST_F(DownloadBar, ShowsTheAmountAloneWithoutALength) {
    run([&] {
        const unsigned report = begin("report.pdf");
        list->progress(report, 3'100'000, std::nullopt);
        untilSaid("3.1\u00a0MB");
        list->progress(report, 3'200'000, std::nullopt);
        untilSaid("3.2\u00a0MB");
    });
}

TEST_F(DownloadBar, CancelsADownload) {
    run([&] {
        begin("report.pdf");
        begin("picture.png");
        program.untilDrawn(main());
        pressButton("Cancel picture.png");
        RunningProgram::until("it is cancelled", [&] { return !cancelled.empty(); });
        EXPECT_THAT(cancelled, ElementsAre("picture.png"));
        EXPECT_TRUE(buttonNamed(main(), "Cancel report.pdf"));
        EXPECT_FALSE(buttonNamed(main(), "Cancel picture.png"));
    });
}

TEST_F(DownloadBar, OpensAndShowsAFinishedFile) {
    run([&] {
        const auto path = finish(begin("report.pdf"), "report.pdf");
        program.untilDrawn(main());
        pressButton("Open report.pdf");
        RunningProgram::until("it is opened", [&] { return !opened.empty(); });
        pressButton("Show report.pdf in its folder");
        RunningProgram::until("it is shown", [&] { return !shown.empty(); });
        EXPECT_THAT(opened, ElementsAre(path));
        EXPECT_THAT(shown, ElementsAre(path));
        EXPECT_FALSE(buttonNamed(main(), "Cancel report.pdf"));
    });
}

TEST_F(DownloadBar, OnlyShowsAFileThatCouldRun) {
    run([&] {
        finish(begin("page.html"), "page.html");
        EXPECT_FALSE(buttonNamed(main(), "Open page.html"));
        EXPECT_TRUE(buttonNamed(main(), "Show page.html in its folder"));
    });
}

TEST_F(DownloadBar, SaysWhyADownloadFailed) {
    run([&] {
        list->fail(begin("report.pdf"), "The disk is full.");
        EXPECT_THAT(textsIn(main()), Contains("The disk is full."));
        EXPECT_TRUE(visibleIn<Gtk::ProgressBar>(*bar()).empty());
        EXPECT_FALSE(buttonNamed(main(), "Open report.pdf"));
        EXPECT_FALSE(buttonNamed(main(), "Show report.pdf in its folder"));
    });
}

TEST_F(DownloadBar, ShowsAReasonOfSeveralLinesWhole) {
    run([&] {
        std::string reason;
        while (reason.size() < 500)
            reason += "The downloads folder cannot be written to. ";
        list->fail(begin("report.pdf"), reason);
        program.untilDrawn(main());
        const auto scrolled = visibleIn<Gtk::ScrolledWindow>(*bar()).at(0)->get_vadjustment();
        EXPECT_EQ(scrolled->get_upper(), scrolled->get_page_size());
        EXPECT_GT(scrolled->get_page_size(), 60);
    });
}

TEST_F(DownloadBar, LeavesTheKeyboardToThePage) {
    run([&] {
        untilPageHasKeyboard();
        const unsigned report = begin("report.pdf");
        program.untilDrawn(main());
        EXPECT_TRUE(program.app.page->area.has_focus());
        finish(report, "report.pdf");
        RunningProgram::settle();
        EXPECT_TRUE(program.app.page->area.has_focus());
    });
}

TEST_F(DownloadBar, IsReachedByF6) {
    run([&] {
        untilPageHasKeyboard();
        begin("report.pdf");
        goThere();
        program.screen.press(GDK_KEY_F6);
        untilPageHasKeyboard();
        program.screen.press(GDK_KEY_F6);
        program.screen.press(GDK_KEY_space);
        RunningProgram::until("it is cancelled", [&] { return !cancelled.empty(); });
        untilPageHasKeyboard();
    });
}

TEST_F(DownloadBar, ComesAfterTheBarAboutThePage) {
    run([&] {
        untilPageHasKeyboard();
        program.app.page->setForeignHost("accounts.example.com");
        begin("report.pdf");
        program.untilDrawn(main());
        program.screen.press(GDK_KEY_F6);
        RunningProgram::until("the bar about the page has the keyboard",
                              [&] { return hasKeyboard("Back to Kelo"); });
        program.screen.press(GDK_KEY_F6);
        RunningProgram::until("the downloads have the keyboard",
                              [&] { return hasKeyboard("Cancel report.pdf"); });
        program.screen.press(GDK_KEY_F6);
        untilPageHasKeyboard();
    });
}

TEST_F(DownloadBar, DoesNotPutAnotherButtonUnderTheFinger) {
    run([&] {
        untilPageHasKeyboard();
        const unsigned report = begin("report.pdf");
        goThere();
        finish(report, "report.pdf");
        RunningProgram::until("the keyboard is elsewhere", [&] { return hasKeyboard("Close"); });
        program.screen.press(GDK_KEY_space);
        RunningProgram::until("the bar is gone", [&] { return !bar(); });
        untilPageHasKeyboard();
    });
}

TEST_F(DownloadBar, LeavesRoomForThePage) {
    run([&] {
        for (int number = 0; number < 12; ++number)
            begin("report " + std::to_string(number) + ".pdf");
        program.untilDrawn(main());
        EXPECT_LT(program.boxOf(*bar()).height, 200);
        // On a small screen, the page has more of the window than the list.
        int least = 0;
        int wanted = 0;
        int unused = 0;
        bar()->measure(Gtk::Orientation::VERTICAL, 600, least, wanted, unused, unused);
        EXPECT_LT(least, 80);
        EXPECT_GT(wanted, 100);
    });
}

TEST_F(DownloadBar, IsInTheNextWindowToo) {
    run([&] {
        begin("report.pdf");
        main().close();
        RunningProgram::settle();
        program.host.openWindow("main");
        EXPECT_TRUE(buttonNamed(main(), "Cancel report.pdf"));
    });
}

} // namespace
} // namespace kelo::tests
