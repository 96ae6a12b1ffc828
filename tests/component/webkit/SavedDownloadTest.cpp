#include "component/webkit/WebKitFixture.h"

#include <gmock/gmock.h>
#include <sys/mount.h>

#include <condition_variable>
#include <fstream>
#include <mutex>
#include <sstream>

namespace kelo::test {

namespace {

namespace fs = std::filesystem;

using downloads::Download;
using downloads::DownloadStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Longer than what the engine and the kernel keep for themselves.
constexpr std::size_t halfSize = 600'000;
constexpr const char* fileHeaders =
    "HTTP/1.1 200 OK\r\nContent-Type: application/pdf\r\nContent-Disposition: attachment; "
    "filename=\"report.pdf\"\r\n";

std::string chunk(const std::string& contents) {
    std::ostringstream text;
    text << std::hex << contents.size() << "\r\n" << contents << "\r\n";
    return text.str();
}

/// Lets the server's threads go on when the test says so.
class Gate {
public:
    void open() {
        const std::lock_guard lock(mutex);
        isOpen = true;
        opened.notify_all();
    }
    void close() {
        const std::lock_guard lock(mutex);
        isOpen = false;
    }
    void await() {
        std::unique_lock lock(mutex);
        opened.wait(lock, [this] { return isOpen; });
    }

private:
    std::mutex mutex;
    std::condition_variable opened;
    bool isOpen = false;
};

/// A service that sends the first half of a file, and the rest when the test opens the gate.
class SavedDownload : public WebKitFixture {
protected:
    void SetUp() override {
        server = std::make_unique<MisbehavingServer>(
            identity, [this](ServerConnection& connection) { serve(connection); });
        sessionFor(server->url());
        list = session->settings().downloads;
    }
    void TearDown() override {
        gate.open();
        endSession();
        server.reset();
        std::error_code ignored;
        fs::remove_all(saved, ignored);
    }

    void serve(ServerConnection& connection) {
        while (const auto request = connection.read()) {
            if (request->target == "/")
                connection.write(page("<a href='/sized'>get</a>"));
            else if (request->target == "/missing")
                connection.write(httpReply("not here", "", "404 Not Found"));
            else if (request->target == "/named")
                connection.write(httpReply("contents", "Content-Type: application/pdf\r\n"
                                                       "Content-Disposition: attachment; "
                                                       "filename=\"" +
                                                           name + "\"\r\n"));
            else if (!sendSlowly(connection, request->target))
                return;
        }
    }
    bool sendSlowly(ServerConnection& connection, const std::string& target) {
        const bool hasLength = target.starts_with("/sized");
        connection.write(std::string(fileHeaders) +
                         (hasLength ? "Content-Length: " + std::to_string(2 * halfSize)
                                    : std::string("Transfer-Encoding: chunked")) +
                         "\r\n\r\n");
        connection.write(hasLength ? half : chunk(half));
        gate.await();
        if (target.ends_with("-within"))
            connection.write(chunk(half).substr(0, halfSize / 2));
        if (target.ends_with("-lost") || target.ends_with("-within")) {
            connection.breakOff();
            return false;
        }
        connection.write(hasLength ? half : chunk(half) + "0\r\n\r\n");
        return true;
    }

    /// In a view of its own, because a page gets one file with each gesture.
    void start(const std::string& target) {
        ++startedCount;
        makeView(server->url());
        open(server->url("/"));
        evaluate("document.links[0].href = '" + target + "'; document.links[0].click(); 1");
    }
    bool until(const std::function<bool(const Download&)>& condition) {
        return loop.runUntil(
            [&] { return list->all().size() == startedCount && condition(list->all().back()); });
    }
    bool untilHalf() {
        return until([](const Download& each) { return each.received >= halfSize; });
    }
    bool untilEnd() {
        return until([](const Download& each) { return each.status != DownloadStatus::running; });
    }
    std::vector<std::string> filesInFolder() const {
        std::vector<std::string> names;
        if (fs::exists(saved))
            for (const auto& entry : fs::directory_iterator(saved))
                names.push_back(entry.path().filename().string());
        return names;
    }

    const fs::path saved = fs::path(g_get_home_dir()) / "Downloads";
    const std::string half = std::string(halfSize, 'x');
    std::string name;
    std::size_t startedCount = 0;
    Gate gate;
    std::unique_ptr<MisbehavingServer> server;
    std::shared_ptr<downloads::DownloadList> list;
};

} // namespace

TEST_F(SavedDownload, TellsHowMuchOfItHasArrived) {
    start("/sized");
    ASSERT_TRUE(untilHalf());
    EXPECT_EQ(list->all()[0].name, "report.pdf");
    EXPECT_EQ(list->all()[0].received, halfSize);
    EXPECT_EQ(list->all()[0].length, 2 * halfSize);
    gate.open();
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(list->all()[0].status, DownloadStatus::finished);
    EXPECT_EQ(list->all()[0].path, saved / "report.pdf");
    EXPECT_EQ(fs::file_size(saved / "report.pdf"), 2 * halfSize);
    EXPECT_THAT(filesInFolder(), ElementsAre("report.pdf"));
}

TEST_F(SavedDownload, WithoutALengthTellsTheAmountAlone) {
    start("/endless");
    ASSERT_TRUE(untilHalf());
    EXPECT_EQ(list->all()[0].length, std::nullopt);
    gate.open();
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(list->all()[0].status, DownloadStatus::finished);
    EXPECT_EQ(fs::file_size(saved / "report.pdf"), 2 * halfSize);
}

TEST_F(SavedDownload, IsNotSeenBeforeItIsComplete) {
    start("/sized");
    ASSERT_TRUE(untilHalf());
    for (const std::string& each : filesInFolder())
        EXPECT_TRUE(each.starts_with(".")) << each;
}

TEST_F(SavedDownload, ThatIsCancelledLeavesNothing) {
    start("/sized");
    ASSERT_TRUE(untilHalf());
    list->cancel(list->all()[0].identifier);
    EXPECT_THAT(list->all(), IsEmpty());
    gate.open();
    // The engine ends the connection when it has heard of it.
    ASSERT_TRUE(loop.runUntil([&] { return server->endedCount() > 0; }));
    EXPECT_TRUE(loop.runUntil([&] { return filesInFolder().empty(); }));
    EXPECT_THAT(list->all(), IsEmpty());
}

// Not between two chunks: the engine takes that for the end of the file, and says nothing else of
// it than of a whole one.
TEST_F(SavedDownload, WhoseConnectionIsLostFailsAndLeavesNothing) {
    for (const char* target : {"/sized-lost", "/endless-within"}) {
        SCOPED_TRACE(target);
        gate.close();
        start(target);
        ASSERT_TRUE(untilHalf());
        gate.open();
        ASSERT_TRUE(untilEnd());
        EXPECT_EQ(list->all().back().sentence, "The connection was lost. Download the file again.");
        EXPECT_THAT(filesInFolder(), IsEmpty());
    }
}

TEST_F(SavedDownload, UnderANameThatIsTooLongIsCut) {
    name = std::string(300, 'n') + ".tar.gz";
    start("/named");
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(list->all()[0].status, DownloadStatus::finished);
    EXPECT_THAT(filesInFolder(), ElementsAre(std::string(248, 'n') + ".tar.gz"));
}

TEST_F(SavedDownload, OverwritesNoFileOfItsName) {
    fs::create_directories(saved);
    std::ofstream(saved / "name.tar.gz") << "older";
    name = "name.tar.gz";
    start("/named");
    ASSERT_TRUE(untilEnd());
    EXPECT_THAT(filesInFolder(), UnorderedElementsAre("name.tar.gz", "name (2).tar.gz"));
    EXPECT_EQ(fs::file_size(saved / "name.tar.gz"), 5u);
}

TEST_F(SavedDownload, BesideAnotherOfItsNameGetsItsOwn) {
    start("/sized");
    ASSERT_TRUE(untilHalf());
    start("/endless");
    ASSERT_TRUE(loop.runUntil([&] { return list->all().size() == 2; }));
    EXPECT_EQ(list->all()[1].name, "report (2).pdf");
    gate.open();
    ASSERT_TRUE(loop.runUntil([&] { return list->runningCount() == 0; }));
    EXPECT_THAT(filesInFolder(), UnorderedElementsAre("report.pdf", "report (2).pdf"));
}

TEST_F(SavedDownload, ThatTheServiceDoesNotHaveIsNotSaved) {
    ++startedCount;
    makeView(server->url());
    open(server->url("/"));
    evaluate("Object.assign(document.links[0], {href: '/missing', download: 'report.pdf'}).click();"
             "1");
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(list->all()[0].name, "report.pdf");
    EXPECT_EQ(list->all()[0].sentence, "The service did not give the file. Try again later.");
    EXPECT_THAT(filesInFolder(), IsEmpty());
}

TEST_F(SavedDownload, OnAFullDiskSaysSoAndLeavesNothing) {
    fs::create_directories(saved);
    if (::mount("tmpfs", saved.c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "no disk of the test's own can be made";
    start("/sized");
    gate.open();
    EXPECT_TRUE(untilEnd());
    EXPECT_EQ(list->all()[0].sentence,
              "The disk is full. Make room on it, and download the file again.");
    EXPECT_THAT(filesInFolder(), IsEmpty());
    ::umount2(saved.c_str(), MNT_DETACH);
}

TEST_F(SavedDownload, IntoAFolderOnADiskThatIsAwaySaysSo) {
    fs::create_directory_symlink(folder / "away", saved);
    name = "report.pdf";
    start("/named");
    EXPECT_TRUE(untilEnd());
    EXPECT_THAT(list->all()[0].sentence,
                testing::StartsWith("The downloads folder cannot be written to."));
}

TEST_F(SavedDownload, IntoAFolderThatCannotBeWrittenSaysSo) {
    fs::create_directories(saved);
    if (::mount("tmpfs", saved.c_str(), "tmpfs", MS_RDONLY, "") != 0)
        GTEST_SKIP() << "no disk of the test's own can be made";
    name = "report.pdf";
    start("/named");
    EXPECT_TRUE(untilEnd());
    EXPECT_EQ(list->all()[0].name, "report.pdf");
    EXPECT_EQ(list->all()[0].sentence,
              "The downloads folder cannot be written to. Change its permissions, or choose "
              "another one in the settings of your desktop.");
    ::umount2(saved.c_str(), MNT_DETACH);
}

} // namespace kelo::test
