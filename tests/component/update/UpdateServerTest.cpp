#include "component/update/DesktopUpdaterFixture.h"

#include <gmock/gmock.h>

#include <sys/resource.h>

#include <csignal>

namespace kelo::test {

using testing::HasSubstr;

using UpdateServer = DesktopUpdaterFixture;

namespace {

std::string redirectTo(const std::string& address) {
    return httpReply("", "Location: " + address + "\r\n", "302 Found");
}

/// Limits the size of every file that this process writes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &before);
        // Without this the kernel ends the process instead of failing the write.
        formerHandler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, formerHandler);
    }

private:
    rlimit before{};
    void (*formerHandler)(int) = SIG_DFL;
};

} // namespace

TEST_F(UpdateServer, InOrderLeadsToAVerifiedArchive) {
    installUntil("ready 1.1");
    EXPECT_EQ(installer.prepared, std::vector<std::string>{archive});
    EXPECT_EQ(installer.preparedName, "kelo.tar.zst");
    EXPECT_EQ(user.received.back(), archive.size());
}

TEST_F(UpdateServer, WithAnotherPublishersArchiveIsRefused) {
    publish(releaseOf("1.1", archive, Publisher().sign(archive)));
    installUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("Nothing shows that this update comes from"));
    expectNothingLeft();
}

TEST_F(UpdateServer, ThatCutsTheArchiveShortIsRefused) {
    const std::string whole = httpReply(archive);
    const std::string half = whole.substr(0, whole.size() / 2);
    behave("/kelo.tar.zst", [half](ServerConnection& connection) {
        connection.write(half);
        connection.breakOff();
    });
    installUntil("failure");
    EXPECT_EQ(user.sentence, "The reply from localhost broke off before its end. Try again.");
    expectNothingLeft();
}

TEST_F(UpdateServer, WithAShorterArchiveThanAnnouncedIsRefused) {
    reply("/kelo.tar.zst", httpReply(archive.substr(1)));
    installUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("not the file that was announced"));
    expectNothingLeft();
}

TEST_F(UpdateServer, WithAShorterArchiveInChunksIsRefused) {
    reply("/kelo.tar.zst",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nkkkk\r\n0\r\n\r\n");
    installUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("not the file that was announced"));
    expectNothingLeft();
}

TEST_F(UpdateServer, ThatNeverStopsSendingIsCutOff) {
    behave("/kelo.tar.zst", [](ServerConnection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        const std::string piece(64 * 1024, 'k');
        while (connection.write(piece)) {
        }
    });
    installUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("not the file that was announced"));
    expectNothingLeft();
}

TEST_F(UpdateServer, ThatSwapsTheArchiveAfterTheOfferIsRefused) {
    checkUntil("offer 1.0 -> 1.1");
    reply("/kelo.tar.zst", httpReply(std::string(archive.size(), 'x')));
    user.choice->resume(updater::UpdateChoice::install);
    waitFor("failure");
    EXPECT_THAT(user.sentence, HasSubstr("Nothing shows that this update comes from"));
    expectNothingLeft();
}

TEST_F(UpdateServer, WithOlderVersionsHasNothingNew) {
    publish(signedRelease("0.9") + signedRelease("1.0"));
    checkUntil("message Kelo is up to date");
    EXPECT_EQ(requestsFor("/kelo.tar.zst"), 0);
}

TEST_F(UpdateServer, ThatSendsTheFeedOnToHttpIsRefused) {
    reply("/appcast.xml", redirectTo("http://localhost:9/appcast.xml"));
    checkUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("an address that is not secure"));
}

TEST_F(UpdateServer, ThatSendsTheArchiveOnToHttpIsRefused) {
    reply("/kelo.tar.zst", redirectTo("http://localhost:9/kelo.tar.zst"));
    installUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("an address that is not secure"));
    expectNothingLeft();
}

TEST_F(UpdateServer, MaySendTheArchiveOnToAnotherServer) {
    const MisbehavingServer other(authority.issue(), MisbehavingServer::saying(httpReply(archive)));
    reply("/kelo.tar.zst", redirectTo(other.origin() + "/mirror"));
    installUntil("ready 1.1");
    EXPECT_EQ(installer.prepared, std::vector<std::string>{archive});
}

TEST_F(UpdateServer, ThatSendsOnWithoutEndIsGivenUp) {
    reply("/appcast.xml", redirectTo("/appcast.xml"));
    checkUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("redirected Kelo too often"));
    EXPECT_EQ(requestsFor("/appcast.xml"), 6);
}

TEST_F(UpdateServer, WithABillionLaughsIsRefused) {
    reply("/appcast.xml",
          httpReply("<?xml version=\"1.0\"?><!DOCTYPE rss [<!ENTITY a \"ha\">"
                    "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                    "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
                    "<rss><channel><item><title>&c;</title></item></channel></rss>"));
    checkUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("The list of updates could not be read"));
    EXPECT_THAT(log.back(), HasSubstr("document type declaration"));
}

TEST_F(UpdateServer, WithAFeedAboveFourMebibytesIsRefused) {
    reply("/appcast.xml", httpReply(feedOf(std::string(4 * 1024 * 1024, ' '))));
    checkUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("sent more than the updater accepts"));
}

TEST_F(UpdateServer, WithAnEndlessFeedIsRefused) {
    behave("/appcast.xml", [](ServerConnection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        const std::string piece(64 * 1024, ' ');
        while (connection.write(piece)) {
        }
    });
    checkUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("sent more than the updater accepts"));
}

TEST_F(UpdateServer, InTroubleIsSaidToBe) {
    for (const char* status : {"500 Internal Server Error", "503 Service Unavailable"}) {
        reply("/appcast.xml", httpReply(feedOf(signedRelease("1.1")), "", status));
        user.shown.clear();
        made.reset();
        checkUntil("failure");
        EXPECT_EQ(user.sentence,
                  "localhost cannot provide updates at the moment. Try again later.");
    }
}

TEST_F(UpdateServer, WithoutTheFeedIsSaidToBe) {
    reply("/appcast.xml", httpReply("gone", "", "404 Not Found"));
    checkUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("does not have this update"));
}

TEST_F(UpdateServer, ThatHangsBeforeItsReplyIsGivenUp) {
    behave("/appcast.xml", [](ServerConnection& connection) { connection.waitForPeer(); });
    checkUntil("failure");
    EXPECT_EQ(user.sentence, "localhost did not answer within 1 second. Try again later.");
}

TEST_F(UpdateServer, ThatHangsInTheArchiveIsGivenUp) {
    const std::string beginning = httpReply(archive).substr(0, 1000);
    behave("/kelo.tar.zst", [beginning](ServerConnection& connection) {
        connection.write(beginning);
        connection.waitForPeer();
    });
    installUntil("failure");
    EXPECT_EQ(user.sentence, "localhost did not answer within 1 second. Try again later.");
    expectNothingLeft();
}

TEST_F(UpdateServer, ThatIsSlowButSendsIsWaitedFor) {
    const std::string whole = httpReply(archive);
    behave("/kelo.tar.zst", [whole](ServerConnection& connection) {
        const std::size_t piece = whole.size() / 6 + 1;
        for (std::size_t at = 0; at < whole.size(); at += piece) {
            connection.write(std::string_view(whole).substr(at, piece));
            connection.peerStirs(std::chrono::milliseconds(300));
        }
    });
    installUntil("ready 1.1");
    EXPECT_EQ(installer.prepared, std::vector<std::string>{archive});
}

TEST_F(UpdateServer, ThatNobodyVouchesForIsNotAsked) {
    const MisbehavingServer forged(TestAuthority::selfSigned(),
                                   MisbehavingServer::saying(httpReply(archive)));
    reply("/kelo.tar.zst", redirectTo(forged.origin() + "/"));
    installUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("not trusted on this computer"));
    EXPECT_TRUE(forged.requests().empty());
    expectNothingLeft();
}

TEST_F(UpdateServer, MaySendTheArchiveOnToNoHostOfTheSameAuthority) {
    IdentityRequest names;
    names.hosts = {"other.localhost"};
    const MisbehavingServer other(authority.issue(names),
                                  MisbehavingServer::saying(httpReply(archive)));
    reply("/kelo.tar.zst",
          redirectTo("https://other.localhost:" + std::to_string(other.port()) + "/"));
    installUntil("failure");
    EXPECT_THAT(user.sentence, HasSubstr("not trusted on this computer"));
    EXPECT_TRUE(other.requests().empty());
    expectNothingLeft();
}

TEST_F(UpdateServer, IsLeftWhenTheUserCancels) {
    behave("/appcast.xml", [](ServerConnection& connection) { connection.waitForPeer(); });
    checkUntil("checking");
    ASSERT_TRUE(loop.runUntil([&] { return requestsFor("/appcast.xml") == 1; }));
    user.cancel();
    EXPECT_TRUE(loop.runUntil([&] { return server->endedCount() == 1; }));
    EXPECT_FALSE(user.open);
}

TEST_F(UpdateServer, IsLeftWhenTheUserCancelsTheDownload) {
    const std::string beginning = httpReply(archive).substr(0, 1000);
    behave("/kelo.tar.zst", [beginning](ServerConnection& connection) {
        connection.write(beginning);
        connection.waitForPeer();
    });
    installUntil("download");
    ASSERT_TRUE(loop.runUntil([&] { return user.received.back() > 0; }));
    user.cancel();
    EXPECT_TRUE(loop.runUntil([&] { return !user.open; }));
    expectNothingLeft();
}

TEST_F(UpdateServer, ArchiveThatTheDiskHasNoRoomForIsDeleted) {
    checkUntil("offer 1.0 -> 1.1");
    const FileSizeLimit limit(100000);
    user.choice->resume(updater::UpdateChoice::install);
    waitFor("failure");
    EXPECT_EQ(user.sentence,
              "There is not enough room on the disk for the update. Please make room and try "
              "again.");
    expectNothingLeft();
}

TEST_F(UpdateServer, RemembersTheCheck) {
    publish("");
    checkUntil("message");
    const auto state =
        updater::FileStateStore(folder.path() / "state" / "updater", [](const std::string& line) {
            ADD_FAILURE() << line;
        }).load();
    EXPECT_EQ(state.checkCount, 1u);
    EXPECT_TRUE(state.lastCheck);
    EXPECT_TRUE(state.rolloutNumber);
}

TEST_F(UpdateServer, SeesNothingOfTheUserButTheRequest) {
    checkUntil("offer");
    const auto request = server->requests().at(0);
    EXPECT_EQ(request.headerNames(),
              (std::vector<std::string>{"accept-encoding", "connection", "host", "user-agent"}));
    EXPECT_THAT(request.header("user-agent").value(), testing::MatchesRegex("Kelo/[^ ]*"));
    EXPECT_EQ(server->offeredProtocols(), std::vector<std::string>{"http/1.1"});
}

} // namespace kelo::test
