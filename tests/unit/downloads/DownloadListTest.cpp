#include "linux/downloads/DownloadList.h"

#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>

namespace kelo::test {
namespace {

using downloads::Download;
using downloads::DownloadStatus;
using testing::ElementsAre;
using testing::IsEmpty;

class Observer final : public downloads::DownloadObserver {
public:
    void downloadsChanged() override { ++changes; }
    void downloadEnded(const Download& download) override { ended.push_back(download); }

    int changes = 0;
    std::vector<Download> ended;
};

class DownloadList : public testing::Test {
protected:
    DownloadList() {
        list.addObserver(observer);
        std::ofstream(path) << "contents";
    }

    unsigned begin(const std::string& name = "report.pdf") {
        return list.begin(name, [this, name] { cancelled.push_back(name); });
    }

    const TemporaryFolder folder;
    const std::string path = (folder / "report (2).pdf").string();
    bool mayBeOpened = true;
    std::vector<std::string> opened;
    std::vector<std::string> shown;
    downloads::DownloadList list{{[this](const std::string&) { return mayBeOpened; },
                                  [this](const std::string& each) { opened.push_back(each); },
                                  [this](const std::string& each) { shown.push_back(each); }}};
    std::shared_ptr<Observer> observer = std::make_shared<Observer>();
    std::vector<std::string> cancelled;
};

TEST_F(DownloadList, TellsOfABeginning) {
    begin();
    ASSERT_EQ(list.all().size(), 1u);
    EXPECT_EQ(list.all()[0].name, "report.pdf");
    EXPECT_EQ(list.all()[0].status, DownloadStatus::running);
    EXPECT_EQ(list.runningCount(), 1u);
    EXPECT_EQ(observer->changes, 1);
}

TEST_F(DownloadList, KnowsHowMuchHasArrivedAndTellsNobody) {
    const unsigned report = begin();
    observer->changes = 0;
    list.progress(report, 1000, 5000);
    EXPECT_EQ(list.all()[0].received, 1000u);
    EXPECT_EQ(list.all()[0].length, 5000u);
    EXPECT_EQ(observer->changes, 0);
}

TEST_F(DownloadList, BelievesNoLengthThatIsExceeded) {
    const unsigned report = begin();
    list.progress(report, 6000, 5000);
    EXPECT_EQ(list.all()[0].length, std::nullopt);
}

TEST_F(DownloadList, GivesAFinishedFileTheNameThatItGot) {
    list.finish(begin(), path);
    EXPECT_EQ(list.all()[0].name, "report (2).pdf");
    EXPECT_EQ(list.all()[0].status, DownloadStatus::finished);
    EXPECT_TRUE(list.all()[0].mayBeOpened);
    EXPECT_EQ(list.runningCount(), 0u);
    ASSERT_EQ(observer->ended.size(), 1u);
    EXPECT_EQ(observer->ended[0].path, path);
}

TEST_F(DownloadList, KeepsTheSentenceOfAFailure) {
    list.fail(begin(), "The disk is full.");
    EXPECT_EQ(list.all()[0].status, DownloadStatus::failed);
    EXPECT_EQ(list.all()[0].sentence, "The disk is full.");
    ASSERT_EQ(observer->ended.size(), 1u);
    EXPECT_EQ(observer->ended[0].status, DownloadStatus::failed);
}

TEST_F(DownloadList, EndsADownloadOnce) {
    const unsigned report = begin();
    list.finish(report, path);
    list.fail(report, "Too late.");
    list.progress(report, 1, 2);
    list.cancel(report);
    EXPECT_EQ(list.all()[0].status, DownloadStatus::finished);
    EXPECT_EQ(observer->ended.size(), 1u);
    EXPECT_THAT(cancelled, IsEmpty());
}

TEST_F(DownloadList, ForgetsWhatTheUserCancels) {
    const unsigned report = begin();
    begin("picture.png");
    observer->changes = 0;
    list.cancel(report);
    EXPECT_THAT(cancelled, ElementsAre("report.pdf"));
    EXPECT_EQ(observer->changes, 1);
    ASSERT_EQ(list.all().size(), 1u);
    EXPECT_EQ(list.all()[0].name, "picture.png");
    EXPECT_THAT(observer->ended, IsEmpty());
    list.fail(report, "The engine says so afterwards.");
    EXPECT_EQ(list.all().size(), 1u);
}

TEST_F(DownloadList, TellsOfNoFailureThatTheCancellingCauses) {
    unsigned report = 0;
    report = list.begin("report.pdf", [&] { list.fail(report, "The engine says so at once."); });
    list.cancel(report);
    EXPECT_THAT(observer->ended, IsEmpty());
    EXPECT_THAT(list.all(), IsEmpty());
}

TEST_F(DownloadList, CancelsAllThatRun) {
    list.finish(begin("done.txt"), path);
    begin("one");
    begin("two");
    list.cancelAll();
    EXPECT_THAT(cancelled, ElementsAre("one", "two"));
    EXPECT_EQ(list.all().size(), 1u);
}

TEST_F(DownloadList, PutsAwayOnlyWhatHasEnded) {
    list.finish(begin("done.txt"), path);
    list.fail(begin("lost.txt"), "Lost.");
    begin("running.txt");
    observer->changes = 0;
    list.dismissEnded();
    EXPECT_EQ(observer->changes, 1);
    ASSERT_EQ(list.all().size(), 1u);
    EXPECT_EQ(list.all()[0].name, "running.txt");
}

TEST_F(DownloadList, ShowsOneRefusalOfAKind) {
    list.refuse("one", "Not now.");
    list.refuse("two", "Not now.");
    list.refuse("three", "Never.");
    ASSERT_EQ(list.all().size(), 2u);
    EXPECT_EQ(list.all()[0].name, "two");
    EXPECT_EQ(list.runningCount(), 0u);
    EXPECT_EQ(observer->ended.size(), 3u);
}

TEST_F(DownloadList, OpensAndShowsWhatItHasSaved) {
    list.finish(begin(), path);
    list.dismissEnded(); // a notification may be clicked after that
    list.open(path);
    list.showInFolder(path);
    EXPECT_THAT(opened, ElementsAre(path));
    EXPECT_THAT(shown, ElementsAre(path));
}

TEST_F(DownloadList, OpensNothingElse) {
    list.finish(begin(), path);
    const std::string other = (folder / "other.pdf").string();
    std::ofstream(other) << "contents";
    list.open(other);
    list.showInFolder(other);
    EXPECT_THAT(opened, IsEmpty());
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(DownloadList, OpensNoProgram) {
    list.finish(begin(), path);
    mayBeOpened = false; // the file was replaced meanwhile
    list.open(path);
    EXPECT_THAT(opened, IsEmpty());
    list.showInFolder(path);
    EXPECT_THAT(shown, ElementsAre(path));
}

TEST_F(DownloadList, SaysThatAFileIsGone) {
    for (const auto use :
         {&downloads::DownloadList::open, &downloads::DownloadList::showInFolder}) {
        std::ofstream(path) << "contents";
        list.finish(begin(), path);
        std::filesystem::remove(path);
        observer->changes = 0;
        (list.*use)(path);
        EXPECT_EQ(observer->changes, 1);
        EXPECT_EQ(list.all()[0].status, DownloadStatus::failed);
        EXPECT_EQ(list.all()[0].sentence, "The file is no longer there. Download it again.");
        list.dismissEnded();
    }
    EXPECT_THAT(opened, IsEmpty());
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(DownloadList, DoesNotNeedItsObservers) {
    observer.reset();
    list.finish(begin(), path);
    EXPECT_EQ(list.all().size(), 1u);
}

} // namespace
} // namespace kelo::test
