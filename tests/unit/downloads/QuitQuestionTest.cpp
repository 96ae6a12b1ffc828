#include "linux/downloads/QuitQuestion.h"

#include "base/async/Spawn.h"
#include "fakes/FakeAlerts.h"
#include "fakes/FakeMainLoop.h"
#include "linux/downloads/DownloadList.h"

#include <gtest/gtest.h>

namespace kelo::test {
namespace {

class QuitQuestion : public testing::Test {
protected:
    ~QuitQuestion() override { dropSpawnedTasks(); }

    static Task<void> ask(std::shared_ptr<downloads::DownloadList> list, fakes::FakeAlerts& alerts,
                          std::optional<bool>& mayEnd) {
        mayEnd = co_await downloads::mayEndDownloads(std::move(list), alerts);
    }

    void begin() {
        list->begin("report.pdf", [this] { ++cancelled; });
    }
    void ask() {
        spawn(ask(list, alerts, mayEnd));
        loop.runUntilIdle();
    }
    void answer(int button) {
        alerts.answer(platform::alertFirstButtonReturn + button);
        loop.runUntilIdle();
    }

    fakes::FakeMainLoop loop;
    const MainLoop::Installation installation{loop};
    std::shared_ptr<downloads::DownloadList> list = std::make_shared<downloads::DownloadList>(
        downloads::FileHandling{[](const std::string&) { return true; }, nullptr, nullptr});
    fakes::FakeAlerts alerts;
    std::optional<bool> mayEnd;
    int cancelled = 0;
};

TEST_F(QuitQuestion, IsNotAskedWithoutARunningDownload) {
    list->finish(list->begin("done.txt", [] {}), "/done.txt");
    ask();
    EXPECT_EQ(mayEnd, true);
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(QuitQuestion, SaysHowManyDownloadsRun) {
    begin();
    ask();
    EXPECT_EQ(alerts.shown.at(0).messageText, "A download is not finished");
    answer(1);
    begin();
    ask();
    EXPECT_EQ(alerts.shown.at(1).messageText, "2 downloads are not finished");
}

TEST_F(QuitQuestion, AnsweredByQuitAnywayCancelsTheDownloads) {
    begin();
    begin();
    ask();
    EXPECT_EQ(mayEnd, std::nullopt);
    ASSERT_EQ(alerts.shown.at(0).buttons.at(0), "Quit Anyway");
    answer(0);
    EXPECT_EQ(mayEnd, true);
    EXPECT_EQ(cancelled, 2);
}

// Escape presses the last button.
TEST_F(QuitQuestion, AnsweredByKeepDownloadingOrEscapeChangesNothing) {
    begin();
    ask();
    ASSERT_EQ(alerts.shown.at(0).buttons.back(), "Keep Downloading");
    answer(1);
    EXPECT_EQ(mayEnd, false);
    EXPECT_EQ(cancelled, 0);
    EXPECT_EQ(list->runningCount(), 1u);
}

} // namespace
} // namespace kelo::test
