#include "component/gtk/DownloadFixture.h"

#include <gdk/gdkkeysyms.h>
#include <gmock/gmock.h>

namespace kelo::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A page that its user does not want to leave.
class StayingPage final : public window::OpenPage {
public:
    explicit StayingPage(window::OpenPages& pages) : pages(pages) { pages.add(*this); }
    ~StayingPage() override { pages.remove(*this); }
    StayingPage(const StayingPage&) = delete;
    StayingPage& operator=(const StayingPage&) = delete;
    void tryToLeave(std::function<void(bool leaves)> decided) override { decided(false); }

private:
    window::OpenPages& pages;
};

constexpr const char* question = "A download is not finished";

class Departure : public DownloadFixture {
protected:
    void answer(const char* button) {
        auto& dialog = program.window(question);
        program.untilActive(dialog);
        auto* const found = buttonNamed(dialog, button);
        ASSERT_TRUE(found) << button;
        program.click(*found);
    }
    bool isAsked() {
        for (auto* window : program.windowsOnScreen())
            if (window->get_title() == question)
                return true;
        return false;
    }
};

TEST_F(Departure, EndsTheProgramOnceTheUserAgrees) {
    program.runToItsOwnEnd([&] {
        begin("report.pdf");
        untilPageHasKeyboard();
        program.screen.press(GDK_KEY_q, {GDK_KEY_Control_L});
        answer("Quit Anyway");
    });
    EXPECT_EQ(program.status, 0);
    EXPECT_THAT(cancelled, ElementsAre("report.pdf"));
}

TEST_F(Departure, IsCalledOffByKeepDownloadingAndByEscape) {
    run([&] {
        begin("report.pdf");
        for (const bool byKey : {false, true}) {
            program.host.terminate();
            if (byKey) {
                program.untilActive(program.window(question));
                program.screen.press(GDK_KEY_Escape);
            } else {
                answer("Keep Downloading");
            }
            RunningProgram::until("the question is gone", [&] { return !isAsked(); });
            RunningProgram::until("nothing is asked any more",
                                  [&] { return spawnedTaskCount() == 0; });
        }
        EXPECT_THAT(cancelled, IsEmpty());
        EXPECT_EQ(list->runningCount(), 1u);
    });
}

TEST_F(Departure, AsksOnceHoweverOftenItIsWanted) {
    run([&] {
        begin("report.pdf");
        program.host.terminate();
        program.untilActive(program.window(question));
        program.host.terminate();
        RunningProgram::settle();
        int asked = 0;
        for (auto* window : program.windowsOnScreen())
            asked += window->get_title() == question ? 1 : 0;
        EXPECT_EQ(asked, 1);
    });
}

TEST_F(Departure, AsksNothingWithoutAReason) {
    program.runToItsOwnEnd([&] {
        finish(begin("report.pdf"), "report.pdf");
        program.host.terminate();
    });
    EXPECT_EQ(program.status, 0);
}

TEST_F(Departure, AsksWithoutAWindow) {
    program.runToItsOwnEnd([&] {
        begin("report.pdf");
        main().close();
        RunningProgram::settle();
        program.host.terminate();
        answer("Quit Anyway");
    });
    EXPECT_THAT(cancelled, ElementsAre("report.pdf"));
}

TEST_F(Departure, LosesNoDownloadForAPageThatStays) {
    run([&] {
        const StayingPage page(*pages);
        begin("report.pdf");
        program.host.terminate();
        RunningProgram::until("nothing is asked any more", [&] { return spawnedTaskCount() == 0; });
        EXPECT_FALSE(isAsked());
        EXPECT_THAT(cancelled, IsEmpty());
    });
}

TEST_F(Departure, ShowsTheWindowOfAPageThatStays) {
    run([&] {
        const StayingPage page(*pages);
        main().close();
        RunningProgram::settle();
        program.host.terminate();
        program.untilActive(main());
    });
}

} // namespace
} // namespace kelo::tests
