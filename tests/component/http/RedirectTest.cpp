#include "component/http/HttpFixture.h"

#include "linux/http/Redirect.h"

#include <gmock/gmock.h>

namespace kelo::test {

using platform::UrlRequest;
using testing::ElementsAre;

/// One server that sends on every request but those for /end, with a status and a target.
class Redirect : public HttpFixture {
protected:
    static MisbehavingServer::Behaviour sendingOn(std::string status, std::string target) {
        return MisbehavingServer::answering([=](const WireRequest& request) {
            if (request.target == "/end")
                return httpReply("end");
            return httpReply("moved", "Location: " + target + "\r\n", status);
        });
    }

    static UrlRequest registration(Url url) {
        UrlRequest request{std::move(url)};
        request.method = "POST";
        request.headers = {{"Cookie", "session-token=secret"},
                           {"x-csrf-token", "token"},
                           {"Content-Type", "application/json"}};
        request.body = bytesOf("{\"password\":\"pw\"}");
        return request;
    }

    static void expectNoSecret(const WireRequest& request) {
        EXPECT_EQ(request.method, "GET");
        EXPECT_THAT(request.headerNames(),
                    ElementsAre("accept-encoding", "connection", "host", "user-agent"));
        EXPECT_EQ(request.body, "");
    }
};

TEST_F(Redirect, AnotherOriginGetsNeitherCookieNorTokenNorBody) {
    for (const char* status : {"301 Moved", "302 Found", "303 See Other", "307 Temporary Redirect",
                               "308 Permanent Redirect"}) {
        const auto other = server(MisbehavingServer::saying(httpReply("elsewhere")));
        const auto first = server(sendingOn(status, other->origin() + "/taken"));
        EXPECT_EQ(textOf(fetch(registration(first->url("/start"))).body), "elsewhere");
        EXPECT_EQ(first->requests().at(0).header("cookie"), "session-token=secret");
        ASSERT_EQ(other->requests().size(), 1u) << status;
        expectNoSecret(other->requests().front());
    }
}

TEST_F(Redirect, WayBackFromAnotherOriginDoesNotBringThemBack) {
    std::string back;
    const auto other = server(MisbehavingServer::answering([&back](const WireRequest&) {
        return httpReply("", "Location: " + back + "\r\n", "307 Temporary Redirect");
    }));
    const auto first = server(sendingOn("307 Temporary Redirect", other->origin() + "/"));
    back = first->origin() + "/end";
    EXPECT_EQ(textOf(fetch(registration(first->url("/start"))).body), "end");
    ASSERT_EQ(first->requests().size(), 2u);
    expectNoSecret(first->requests().back());
}

TEST_F(Redirect, AReplySaysWhetherTheWayLedToAnotherOrigin) {
    std::string back;
    const auto other = server(MisbehavingServer::answering([&back](const WireRequest& request) {
        if (request.target == "/there")
            return httpReply("elsewhere");
        return httpReply("", "Location: " + back + "\r\n", "302 Found");
    }));
    const auto there = server(sendingOn("302 Found", other->origin() + "/there"));
    EXPECT_TRUE(fetch({there->url("/start")}).changedOrigin);
    const auto thereAndBack = server(sendingOn("302 Found", other->origin() + "/back"));
    back = thereAndBack->origin() + "/end";
    const auto reply = fetch({thereAndBack->url("/start")});
    EXPECT_EQ(textOf(reply.body), "end");
    EXPECT_TRUE(reply.changedOrigin);
    EXPECT_FALSE(fetch({there->url("/end")}).changedOrigin);
}

TEST_F(Redirect, WithinTheOriginHeadersGoAlong) {
    const auto peer = server(sendingOn("307 Temporary Redirect", "/end"));
    const platform::HttpReply reply = fetch(registration(peer->url("/start")));
    EXPECT_EQ(textOf(reply.body), "end");
    EXPECT_FALSE(reply.changedOrigin);
    const WireRequest seen = peer->requests().at(1);
    EXPECT_EQ(seen.method, "POST");
    EXPECT_EQ(seen.header("cookie"), "session-token=secret");
    EXPECT_EQ(seen.header("x-csrf-token"), "token");
    EXPECT_EQ(seen.body, "{\"password\":\"pw\"}");
}

TEST_F(Redirect, PostBecomesGetWhereHttpSaysSo) {
    for (const char* status : {"301 Moved", "302 Found", "303 See Other"}) {
        const auto peer = server(sendingOn(status, "end"));
        EXPECT_EQ(textOf(fetch(registration(peer->url("/start"))).body), "end");
        const WireRequest seen = peer->requests().at(1);
        EXPECT_EQ(seen.method, "GET");
        EXPECT_EQ(seen.body, "");
        EXPECT_EQ(seen.header("cookie"), "session-token=secret");
        EXPECT_FALSE(seen.header("content-type"));
        EXPECT_FALSE(seen.header("content-length"));
    }
}

TEST_F(Redirect, HeadersOfTheBodyGoWithItWhateverTheirCase) {
    auto request = registration(*Url::parse("https://localhost/start"));
    request.headers = {{"content-type", "application/json"},
                       {"CONTENT-LANGUAGE", "nl"},
                       {"x-csrf-token", "token"}};
    const auto next = http::redirected(request, 303, "/end");
    ASSERT_TRUE(next);
    EXPECT_THAT(next->headers,
                ElementsAre(std::pair<std::string, std::string>("x-csrf-token", "token")));
}

TEST_F(Redirect, MethodsOtherThanPostStay) {
    const std::pair<const char*, int> kept[] = {{"HEAD", 301}, {"HEAD", 302}, {"HEAD", 303},
                                                {"PUT", 301},  {"PUT", 302},  {"PUT", 307},
                                                {"POST", 307}, {"POST", 308}, {"GET", 303}};
    for (const auto& [method, status] : kept) {
        UrlRequest request{*Url::parse("https://localhost/start")};
        request.method = method;
        EXPECT_EQ(http::redirected(request, status, "/end")->method, method) << status;
    }
    UrlRequest put{*Url::parse("https://localhost/start")};
    put.method = "PUT";
    EXPECT_EQ(http::redirected(put, 303, "/end")->method, "GET");
}

TEST_F(Redirect, AnotherOriginIsAskedForNoMoreThanBefore) {
    UrlRequest request{*Url::parse("https://localhost/start")};
    request.method = "HEAD";
    EXPECT_EQ(http::redirected(request, 307, "https://localhost:2/")->method, "HEAD");
    request.method = "PUT";
    EXPECT_EQ(http::redirected(request, 307, "https://localhost:2/")->method, "GET");
}

TEST_F(Redirect, OtherStatusesAreNoRedirect) {
    const UrlRequest request{*Url::parse("https://localhost/start")};
    for (const int status : {200, 201, 300, 304, 305, 306, 309, 400})
        EXPECT_FALSE(http::redirected(request, status, "/end")) << status;
}

TEST_F(Redirect, UnencryptedTargetIsNotFollowed) {
    const auto peer = server(sendingOn("302 Found", "http://localhost:9/end"));
    const auto error = failureOf(registration(peer->url("/start")));
    EXPECT_EQ(error.kind(), FailureKind::insecure);
    EXPECT_EQ(error.localizedDescription(), "localhost sent Kelo on to an address that is not "
                                            "secure, so nothing more was sent.");
}

TEST_F(Redirect, TargetOfAnUntrustedServerIsNotFollowed) {
    const MisbehavingServer other(TestAuthority::selfSigned(),
                                  MisbehavingServer::saying(httpReply("x")));
    const auto peer = server(sendingOn("302 Found", other.origin() + "/"));
    EXPECT_EQ(failureOf({peer->url("/start")}).kind(), FailureKind::insecure);
}

TEST_F(Redirect, WithoutLocationIsAReply) {
    const auto peer = server(MisbehavingServer::saying(httpReply("body", "", "302 Found")));
    const auto reply = fetch({peer->url()});
    EXPECT_EQ(reply.status, 302);
    EXPECT_EQ(textOf(reply.body), "body");
}

TEST_F(Redirect, UnreadableLocationIsABadReply) {
    // GLib reads the second, but cannot write it.
    for (const char* location : {"https://[broken", "x:.///"}) {
        const auto peer = server(sendingOn("302 Found", location));
        EXPECT_EQ(failureOf({peer->url("/start")}).kind(), FailureKind::badReply) << location;
    }
}

TEST_F(Redirect, LoopEnds) {
    const auto peer = server(sendingOn("302 Found", "/start"));
    EXPECT_EQ(failureOf({peer->url("/start")}).kind(), FailureKind::badReply);
    EXPECT_EQ(peer->requests().size(), 21u);
}

} // namespace kelo::test
