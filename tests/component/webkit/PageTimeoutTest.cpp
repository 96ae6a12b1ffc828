#include "component/webkit/ManualTimers.h"
#include "component/webkit/WebKitFixture.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <string>

namespace kelo::test {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const std::string chunkedHead = "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n"
                                "Transfer-Encoding: chunked\r\n\r\n";
const std::string chunkedEnd = "0\r\n\r\n";

// Larger than what the engine holds back to guess the type of a document.
std::string chunk() {
    return "400\r\n" + std::string(1024, 'x') + "\r\n";
}

} // namespace

/// Servers that take their time.
class PageTimeout : public WebKitFixture {
protected:
    /// Answers "/silent" with nothing, everything else with a page.
    static void silentOnRequest(ServerConnection& connection) {
        while (const auto request = connection.read()) {
            if (request->target == "/silent")
                return connection.waitForPeer();
            connection.write(page("quick"));
        }
    }
    void expectTimedOut(const std::string& sentence) {
        ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
        EXPECT_THAT(pageText(), HasSubstr(sentence));
        EXPECT_THAT(pageText(), HasSubstr("Try again"));
        EXPECT_THAT(recorder->finished, IsEmpty());
    }
};

TEST_F(PageTimeout, ServerThatNeverAnswersIsGivenUpAndDoesNotFinish) {
    const MisbehavingServer peer(identity, silentOnRequest);
    makeView(peer.url());
    load(peer.url("/silent"), seconds(1));
    expectTimedOut("localhost did not answer within 1 second. Try again later.");
    EXPECT_TRUE(loop.runUntil([&] { return peer.endedCount() == peer.connectionCount(); }))
        << "the load was not stopped";
}

// The engine tells of no load then.
TEST_F(PageTimeout, DoesNotHoldForAPlaceInTheShownPage) {
    const MisbehavingServer peer(identity, silentOnRequest);
    makeView(peer.url());
    open(peer.url("/"));
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    load(peer.url("/#below"));
    ASSERT_TRUE(waitForScript("location.hash", "#below"));
    EXPECT_GT(timers.scheduled, 0);
    EXPECT_TRUE(loop.runUntil([&] { return !timers.anyPending(); }));
    EXPECT_EQ(pageText(), "quick");
}

TEST_F(PageTimeout, ServerThatAcceptsTlsAndReadsNothingIsGivenUp) {
    std::promise<void> over;
    const MisbehavingServer peer(
        identity, [end = over.get_future().share()](ServerConnection&) { end.wait(); });
    makeView(peer.url());
    load(peer.url("/login"), seconds(1));
    expectTimedOut("localhost did not answer within 1 second.");
    over.set_value();
}

TEST_F(PageTimeout, DocumentThatStopsHalfwayIsGivenUp) {
    const MisbehavingServer peer(identity, [](ServerConnection& connection) {
        if (!connection.read())
            return;
        connection.write(chunkedHead + chunk());
        connection.waitForPeer();
    });
    makeView(peer.url());
    load(peer.url("/"), seconds(1));
    expectTimedOut("localhost did not answer within 1 second.");
}

/// The same with time in the test's hands.
class ManualPageTimeout : public PageTimeout {
protected:
    ManualTimers timers;
    MainLoop::Installation installation{timers};
};

TEST_F(ManualPageTimeout, LinkOfAPageIsGivenUpAfterTheTimeoutOfTheLastLoad) {
    const MisbehavingServer peer(identity, silentOnRequest);
    makeView(peer.url());
    load(peer.url("/"), seconds(7));
    ASSERT_TRUE(waitForFinished(1));
    EXPECT_FALSE(timers.isPending());
    evaluate("location.href = '/silent'; 1");
    // The server may hear of it before this process does.
    ASSERT_TRUE(loop.runUntil(
        [&] { return peer.requests().back().target == "/silent" && timers.isPending(); }));
    EXPECT_THAT(timers.delays, testing::Each(seconds(7)));
    timers.fire();
    ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    EXPECT_THAT(recorder->finished, ElementsAre(peer.origin() + "/"));
}

TEST_F(ManualPageTimeout, TryAgainLoadsThePage) {
    std::atomic<bool> silent = true;
    const MisbehavingServer peer(identity, [&silent](ServerConnection& connection) {
        while (connection.read()) {
            if (silent)
                return connection.waitForPeer();
            connection.write(page("back again"));
        }
    });
    makeView(peer.url());
    load(peer.url("/"));
    ASSERT_TRUE(loop.runUntil([&] { return !peer.requests().empty(); }));
    timers.fire();
    expectTimedOut("localhost did not answer within 60 seconds.");
    silent = false;
    evaluate("document.querySelector('a').click()");
    ASSERT_TRUE(waitForFinished(1));
    EXPECT_EQ(pageText(), "back again");
    EXPECT_THAT(recorder->finished, ElementsAre(peer.origin() + "/"));
}

TEST_F(ManualPageTimeout, BytesOfATricklingServerStartTheTimeoutAgain) {
    std::atomic<bool> complete = false;
    const MisbehavingServer peer(identity, [&](ServerConnection& connection) {
        if (!connection.read())
            return;
        connection.write(chunkedHead);
        while (!complete && !connection.peerStirs(milliseconds(5)))
            if (!connection.write(chunk()))
                return;
        connection.write(chunkedEnd);
        connection.waitForPeer();
    });
    makeView(peer.url());
    load(peer.url("/"));
    // The request, the start of the load and its commitment start it as well. The engine reports
    // ever fewer steps of a document whose length it does not know, so one more must do.
    ASSERT_TRUE(loop.runUntil([&] { return timers.scheduled >= 4; }));
    EXPECT_TRUE(timers.isPending());
    EXPECT_THAT(recorder->finished, IsEmpty());
    complete = true;
    ASSERT_TRUE(waitForFinished(1));
    EXPECT_FALSE(timers.isPending());
    EXPECT_THAT(timers.delays, testing::Each(seconds(60)));
}

TEST_F(ManualPageTimeout, TricklingServerThatFallsSilentIsGivenUp) {
    std::atomic<bool> silent = false;
    const MisbehavingServer peer(identity, [&](ServerConnection& connection) {
        if (!connection.read())
            return;
        connection.write(chunkedHead);
        while (!silent && !connection.peerStirs(milliseconds(5)))
            if (!connection.write(chunk()))
                return;
        connection.waitForPeer();
    });
    makeView(peer.url());
    load(peer.url("/"));
    const int before = timers.scheduled;
    // Its start and its commitment, which come whatever portions the bytes arrive in.
    ASSERT_TRUE(loop.runUntil([&] { return timers.scheduled >= before + 2; }));
    silent = true;
    ASSERT_TRUE(timers.isPending());
    timers.fire();
    expectTimedOut("localhost did not answer within 60 seconds.");
    EXPECT_EQ(timers.delays.back(), seconds(5))
        << "an error page has no timeout but that of the next try";
}

TEST_F(ManualPageTimeout, ImageThatNeverComesDoesNotEndACompleteDocument) {
    const MisbehavingServer peer(identity, [](ServerConnection& connection) {
        while (const auto request = connection.read()) {
            if (request->target != "/")
                return connection.waitForPeer();
            connection.write(page("here <img src='/never'>"));
        }
    });
    makeView(peer.url());
    load(peer.url("/"));
    ASSERT_TRUE(loop.runUntil([&] { return peer.requests().size() >= 2; }));
    ASSERT_TRUE(loop.runUntil([&] { return !timers.isPending(); }));
    EXPECT_THAT(pageText(), HasSubstr("here"));
}

} // namespace kelo::test
