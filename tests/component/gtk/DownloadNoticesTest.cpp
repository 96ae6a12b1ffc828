#include "component/gtk/DesktopAnswers.h"
#include "component/gtk/DownloadFixture.h"

#include <gmock/gmock.h>

namespace kelo::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the desktop shows of downloads that end while nobody looks at the window.
class DownloadNotices : public DownloadFixture {
protected:
    void closeWindow() {
        main().close();
        RunningProgram::settle();
    }
    std::string finishUnseen(const std::string& name) {
        const unsigned download = begin(name);
        closeWindow();
        const auto path = finish(download, name);
        awaitNotice();
        return path;
    }
    void awaitNotice() {
        RunningProgram::until("the notice is shown", [&] { return !desktop.shown.empty(); });
        awaitAnswers(desktop);
    }
    /// The name of the action behind a label; empty if there is no such button.
    std::string actionOf(const std::string& label) const {
        for (std::size_t at = 1; at < desktop.buttons.size(); at += 2)
            if (desktop.buttons[at] == label)
                return desktop.buttons[at - 1];
        return "";
    }
    void activate(const char* action, const std::string& path) {
        g_action_group_activate_action(G_ACTION_GROUP(g_application_get_default()), action,
                                       g_variant_new_string(path.c_str()));
    }

    DesktopOnBus desktop{/*hasTray=*/true};
};

TEST_F(DownloadNotices, AreNotShownWhileTheWindowIsInUse) {
    run([&] {
        finish(begin("report.pdf"), "report.pdf");
        list->fail(begin("picture.png"), "The disk is full.");
        awaitAnswers(desktop);
        awaitAnswers(desktop);
        EXPECT_THAT(desktop.shown, IsEmpty());
    });
}

TEST_F(DownloadNotices, OpenTheFile) {
    run([&] {
        const auto path = finishUnseen("report.pdf");
        EXPECT_THAT(desktop.shown, ElementsAre("Download finished"));
        EXPECT_EQ(desktop.body, "report.pdf");
        desktop.press("default");
        RunningProgram::until("the file is opened", [&] { return !opened.empty(); });
        EXPECT_THAT(opened, ElementsAre(path));
    });
}

TEST_F(DownloadNotices, HaveAButtonForEachThingToDo) {
    run([&] {
        const auto path = finishUnseen("report.pdf");
        desktop.press(actionOf("Show in Folder"));
        RunningProgram::until("the file is shown", [&] { return !shown.empty(); });
        EXPECT_THAT(shown, ElementsAre(path));
        EXPECT_NE(actionOf("Open"), "");
    });
}

TEST_F(DownloadNotices, OnlyShowAFileThatCouldRun) {
    run([&] {
        const auto path = finishUnseen("page.html");
        EXPECT_EQ(actionOf("Open"), "");
        desktop.press("default");
        RunningProgram::until("the file is shown", [&] { return !shown.empty(); });
        EXPECT_THAT(shown, ElementsAre(path));
        EXPECT_THAT(opened, IsEmpty());
    });
}

TEST_F(DownloadNotices, KeepMarkupOutOfTheName) {
    run([&] {
        finishUnseen("R&D &lt;1&gt;.pdf");
        EXPECT_EQ(desktop.body, "R＆D ＆lt;1＆gt;.pdf");
    });
}

TEST_F(DownloadNotices, SayWhyADownloadFailed) {
    run([&] {
        const unsigned report = begin("report.pdf");
        closeWindow();
        list->fail(report, "The disk is full.");
        awaitNotice();
        EXPECT_THAT(desktop.shown, ElementsAre("Download failed"));
        EXPECT_EQ(desktop.body, "report.pdf\nThe disk is full.");
    });
}

// The actions are on the bus, where every program can call them.
TEST_F(DownloadNotices, TakeOnlyFilesThatWereSaved) {
    run([&] {
        const auto path = finish(begin("report.pdf"), "report.pdf");
        const std::string other = (folder / "other.pdf").string();
        std::ofstream(other) << "contents";
        for (const char* action : {"open-download", "show-download"}) {
            activate(action, other);
            activate(action, path);
        }
        EXPECT_THAT(opened, ElementsAre(path));
        EXPECT_THAT(shown, ElementsAre(path));
    });
}

TEST_F(DownloadNotices, GoWithTheProgram) {
    run([&] {
        finishUnseen("report.pdf");
        EXPECT_EQ(desktop.closed, 0);
    });
    RunningProgram::until("the notice is gone", [&] { return desktop.closed == 1; });
}

} // namespace
} // namespace kelo::tests
