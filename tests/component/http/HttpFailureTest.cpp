#include "component/http/HttpFixture.h"

#include "linux/http/TransportErrors.h"

#include <atomic>

namespace kelo::test {

using platform::UrlRequest;

using HttpFailure = HttpFixture;

namespace {

MisbehavingServer::Behaviour breakingOffAfter(std::string bytes) {
    return [bytes = std::move(bytes)](ServerConnection& connection) {
        if (!connection.read())
            return;
        connection.write(bytes);
        connection.breakOff();
    };
}

const std::string interimReply = "HTTP/1.1 100 Continue\r\n\r\n";
const std::string earlyHints = "HTTP/1.1 103 Early Hints\r\nLink: </style.css>\r\n\r\n";
const std::string cutShort = "The reply from localhost broke off before its end. Try again.";

} // namespace

TEST_F(HttpFailure, RefusedConnectionIsNamed) {
    Url nobody = server(MisbehavingServer::saying(""))->url();
    const auto error = failureOf({nobody});
    EXPECT_EQ(error.kind(), FailureKind::cannotConnect);
    EXPECT_EQ(error.localizedDescription(), "Could not connect to localhost: Connection refused.");
    EXPECT_NE(error.cause(), "");
}

TEST_F(HttpFailure, UnknownHostIsNamed) {
    const auto error = failureOf({*Url::parse("https://no-such-host.invalid/")});
    EXPECT_EQ(error.kind(), FailureKind::cannotConnect);
    EXPECT_EQ(error.localizedDescription(),
              "Could not find no-such-host.invalid. Check the network connection and try again.");
}

TEST_F(HttpFailure, ServerThatNeverAnswersTimesOut) {
    const auto peer = server([](ServerConnection& connection) {
        connection.read();
        connection.waitForPeer();
    });
    UrlRequest request{peer->url()};
    request.timeout = std::chrono::seconds(1);
    const auto error = failureOf(request);
    EXPECT_EQ(error.kind(), FailureKind::timedOut);
    EXPECT_EQ(error.localizedDescription(),
              "localhost did not answer within 1 second. Try again later.");
    EXPECT_TRUE(loop.runUntil([&] { return peer->endedCount() == 1; }));
}

TEST_F(HttpFailure, ServerThatDribblesTimesOut) {
    // Each byte alone would keep a time-out between two reads from ever coming.
    const auto peer = server([](ServerConnection& connection) {
        connection.read();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
        while (!connection.peerStirs(std::chrono::milliseconds(20)) && connection.write("x")) {
        }
    });
    UrlRequest request{peer->url()};
    request.timeout = std::chrono::seconds(2);
    const auto error = failureOf(request);
    EXPECT_EQ(error.kind(), FailureKind::timedOut);
    EXPECT_EQ(error.localizedDescription(),
              "localhost did not answer within 2 seconds. Try again later.");
}

TEST_F(HttpFailure, RedirectsShareOneDeadline) {
    const auto peer = server([](ServerConnection& connection) {
        while (const auto request = connection.read()) {
            if (connection.peerStirs(std::chrono::milliseconds(300)))
                return;
            connection.write(httpReply("", "Location: " + request->target + "x\r\n", "302 Found"));
        }
    });
    UrlRequest request{peer->url("/")};
    request.timeout = std::chrono::seconds(1);
    EXPECT_EQ(failureOf(request).kind(), FailureKind::timedOut);
}

TEST_F(HttpFailure, DefaultTimeOutIsAMinute) {
    EXPECT_EQ(UrlRequest{*Url::parse("https://localhost")}.timeout, std::chrono::seconds(60));
}

TEST_F(HttpFailure, ReplyShorterThanItsContentLengthIsNoReply) {
    const auto peer =
        server(MisbehavingServer::saying("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nshort"));
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::badReply);
    EXPECT_EQ(error.localizedDescription(), cutShort);
}

TEST_F(HttpFailure, ReplyBrokenOffInsideItsContentLengthIsNoReply) {
    const auto peer =
        server(breakingOffAfter("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nshort"));
    EXPECT_EQ(failureOf({peer->url()}).localizedDescription(), cutShort);
}

TEST_F(HttpFailure, ChunkedReplyWithoutItsLastChunkIsNoReply) {
    const auto peer = server(MisbehavingServer::saying(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nshort\r\n"));
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::badReply);
    EXPECT_EQ(error.localizedDescription(), cutShort);
}

TEST_F(HttpFailure, ChunkCutInsideIsNoReply) {
    const auto peer = server(MisbehavingServer::saying(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nff\r\nshort"));
    EXPECT_EQ(failureOf({peer->url()}).kind(), FailureKind::badReply);
}

TEST_F(HttpFailure, ChunkSizeThatIsNoNumberIsNoReply) {
    const auto peer = server(MisbehavingServer::saying(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nshort\r\n0\r\n\r\n"));
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::badReply);
    EXPECT_EQ(error.localizedDescription(),
              "localhost sent a reply that Kelo could not read. Try again later.");
}

TEST_F(HttpFailure, WholeChunkedReplyIsAReply) {
    const auto peer = server(MisbehavingServer::saying(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nwhole\r\n0\r\n\r\n"));
    EXPECT_EQ(textOf(fetch({peer->url()}).body), "whole");
}

TEST_F(HttpFailure, ReplyWithoutLengthThatEndsProperlyIsAReply) {
    const auto peer =
        server(MisbehavingServer::saying("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nall of it"));
    EXPECT_EQ(textOf(fetch({peer->url()}).body), "all of it");
}

TEST_F(HttpFailure, ReplyWithoutLengthAndWithoutProperCloseIsNoReply) {
    const auto peer =
        server(breakingOffAfter("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nall of it?"));
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::badReply);
    EXPECT_EQ(error.localizedDescription(), cutShort);
}

TEST_F(HttpFailure, ConnectionLostBeforeTheReplyIsNamed) {
    const auto peer = server([](ServerConnection& connection) {
        connection.read();
        connection.close();
    });
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::cannotConnect);
    EXPECT_EQ(error.localizedDescription(), "The connection to localhost was lost. Try again.");
}

TEST_F(HttpFailure, TlsThatCannotBeSetUpIsNotSecure) {
    const Url url = *Url::parse("https://localhost");
    const gobject::GErrorPointer reason(
        g_error_new_literal(G_TLS_ERROR, G_TLS_ERROR_HANDSHAKE, "no common version"));
    const auto before = http::transportError(*reason, http::TransferPhase::connecting, url);
    EXPECT_EQ(before.kind(), FailureKind::insecure);
    EXPECT_EQ(before.localizedDescription(), "Could not set up a secure connection to localhost, "
                                             "so nothing was sent. Try again later.");
    const auto inside = http::transportError(*reason, http::TransferPhase::insideReply, url);
    EXPECT_EQ(inside.localizedDescription(), cutShort);
}

TEST_F(HttpFailure, WhateverEndsTheConnectionAfterTheHandshakeLosesIt) {
    const Url url = *Url::parse("https://localhost");
    const std::pair<GQuark, int> reasons[] = {
        {G_TLS_ERROR, G_TLS_ERROR_MISC},
        {G_TLS_ERROR, G_TLS_ERROR_CERTIFICATE_REQUIRED},
        {G_IO_ERROR, G_IO_ERROR_CONNECTION_CLOSED},
        {G_IO_ERROR, G_IO_ERROR_NETWORK_UNREACHABLE},
        {G_IO_ERROR, G_IO_ERROR_TIMED_OUT},
        {G_RESOLVER_ERROR, G_RESOLVER_ERROR_INTERNAL},
    };
    for (const auto& [domain, code] : reasons) {
        const gobject::GErrorPointer reason(g_error_new_literal(domain, code, "end"));
        const auto error = http::transportError(*reason, http::TransferPhase::awaitingReply, url);
        EXPECT_EQ(error.kind(), FailureKind::cannotConnect);
        EXPECT_EQ(error.localizedDescription(), "The connection to localhost was lost. Try again.");
    }
}

TEST_F(HttpFailure, EndWithoutACloseNotificationIsNeverBeforeTheHandshake) {
    const gobject::GErrorPointer reason(
        g_error_new_literal(G_TLS_ERROR, G_TLS_ERROR_EOF, "no close notification"));
    EXPECT_EQ(http::transportError(*reason, http::TransferPhase::connecting,
                                   *Url::parse("https://localhost"))
                  .localizedDescription(),
              "The connection to localhost was lost. Try again.");
}

TEST_F(HttpFailure, SomethingOtherThanHttpIsNoReply) {
    const auto peer = server(MisbehavingServer::saying("220 mail.example.org ESMTP\r\n\r\n"));
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::badReply);
    EXPECT_EQ(error.localizedDescription(),
              "localhost sent a reply that Kelo could not read. Try again later.");
}

TEST_F(HttpFailure, ReplyMayFollowTenInterimReplies) {
    std::string bytes;
    for (int count = 0; count < 10; ++count)
        bytes += count % 2 == 0 ? interimReply : earlyHints;
    const auto peer = server(MisbehavingServer::saying(bytes + httpReply("at last")));
    EXPECT_EQ(textOf(fetch({peer->url()}).body), "at last");
}

TEST_F(HttpFailure, MoreInterimRepliesAreNoReply) {
    std::string bytes;
    for (int count = 0; count < 11; ++count)
        bytes += interimReply;
    const auto peer = server(MisbehavingServer::saying(bytes + httpReply("too late")));
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::badReply);
    EXPECT_EQ(error.localizedDescription(),
              "localhost sent a reply that Kelo could not read. Try again later.");
    EXPECT_NE(error.cause(), "");
}

TEST_F(HttpFailure, EndlessInterimRepliesDoNotStopTheProgram) {
    const auto peer = server([](ServerConnection& connection) {
        connection.read();
        std::string piece;
        while (piece.size() < 64 * 1024)
            piece += interimReply;
        while (connection.write(piece)) {
        }
    });
    EXPECT_EQ(failureOf({peer->url()}).kind(), FailureKind::badReply);
    EXPECT_TRUE(loop.runUntil([&] { return peer->endedCount() == 1; }));
}

TEST_F(HttpFailure, ReplyOfOneMebibyteIsTaken) {
    const std::string body(1024 * 1024, 'a');
    const auto peer = server(MisbehavingServer::saying(httpReply(body)));
    EXPECT_EQ(fetch({peer->url()}).body.size(), body.size());
}

TEST_F(HttpFailure, AnnouncedReplyAboveOneMebibyteIsDropped) {
    const auto peer = server(MisbehavingServer::saying(
        "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(1024 * 1024 + 1) + "\r\n\r\nabc"));
    const auto error = failureOf({peer->url()});
    EXPECT_EQ(error.kind(), FailureKind::badReply);
    EXPECT_EQ(error.localizedDescription(),
              "The reply from localhost was longer than 1 MiB and was dropped. Try again later.");
}

TEST_F(HttpFailure, EndlessReplyIsDroppedAtOneMebibyte) {
    std::atomic<std::size_t> sent = 0;
    const auto peer = server([&sent](ServerConnection& connection) {
        connection.read();
        connection.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        const std::string piece(64 * 1024, 'a');
        while (connection.write(piece))
            sent += piece.size();
    });
    EXPECT_EQ(failureOf({peer->url()}).kind(), FailureKind::badReply);
    EXPECT_TRUE(loop.runUntil([&] { return peer->endedCount() == 1; }));
    // What is on its way between the two programs counts as sent as well.
    EXPECT_LT(sent, 12 * 1024 * 1024);
}

} // namespace kelo::test
