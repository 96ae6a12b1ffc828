#include "component/http/HttpFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using platform::HttpCookie;
using platform::SameSitePolicy;
using platform::UrlRequest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A session with a cookie store of its own.
class CookieSession : public HttpFixture {
protected:
    static MisbehavingServer::Behaviour settingCookies(std::vector<std::string> cookies) {
        return MisbehavingServer::answering([cookies](const WireRequest& request) {
            std::string headers;
            if (request.target == "/set")
                for (const std::string& cookie : cookies)
                    headers += "Set-Cookie: " + cookie + "\r\n";
            return httpReply("{}", headers);
        });
    }

    std::vector<HttpCookie> cookiesFor(const Url& url) {
        return own.cookieStorage()->cookies(url).value();
    }

    Session own{Session::Cookies::inMemory,
                trusting(authority, {"localhost", "one.localhost", "two.localhost",
                                     "site.localhost", "evil.site.localhost"})};
};

TEST_F(CookieSession, SharedSessionHasNoStore) {
    EXPECT_EQ(session.cookieStorage(), nullptr);
    const auto peer = server(settingCookies({"a=1; Path=/"}));
    fetch({peer->url("/set")});
    fetch({peer->url("/next")});
    EXPECT_FALSE(peer->requests().at(1).header("cookie"));
}

TEST_F(CookieSession, CookiesOfAReplyAreSentBack) {
    const auto peer = server(settingCookies(
        {"__Host-csrf=1; Path=/; Secure; HttpOnly; SameSite=Lax",
         "__Secure-app.session-token=x%20y; Path=/; Secure; HttpOnly; SameSite=Strict"}));
    loop.run(own.data(peer->url("/set")));
    UrlRequest post{peer->url("/callback")};
    post.method = "POST";
    loop.run(own.data(post));
    EXPECT_EQ(peer->requests().at(1).header("cookie"),
              "__Host-csrf=1; __Secure-app.session-token=x%20y");
}

TEST_F(CookieSession, StoreGivesEveryAttribute) {
    const auto peer = server(settingCookies(
        {"__Secure-session-token=v; Path=/; Secure; HttpOnly; SameSite=Lax; Expires=Fri, 01 Jan "
         "2100 00:00:00 GMT",
         "plain=p; Path=/api; SameSite=Lax"}));
    loop.run(own.data(peer->url("/set")));

    HttpCookie token;
    token.name = "__Secure-session-token";
    token.value = "v";
    token.domain = "localhost";
    token.secure = true;
    token.httpOnly = true;
    token.sameSite = SameSitePolicy::lax;
    token.expires = std::chrono::sys_seconds(std::chrono::seconds(4102444800));
    EXPECT_THAT(cookiesFor(peer->url()), ElementsAre(token));

    HttpCookie plain;
    plain.name = "plain";
    plain.value = "p";
    plain.domain = "localhost";
    plain.path = "/api";
    plain.sameSite = SameSitePolicy::lax;
    EXPECT_THAT(cookiesFor(peer->url("/api/x")), UnorderedElementsAre(token, plain));
}

TEST_F(CookieSession, CookiesThatDoNotApplyAreLeftOut) {
    const auto peer = server(settingCookies({"a=1; Path=/api", "b=2; Path=/; Secure"}));
    loop.run(own.data(peer->url("/set")));
    EXPECT_THAT(cookiesFor(*Url::parse("https://example.org")), IsEmpty());
    EXPECT_EQ(cookiesFor(peer->url()).size(), 1u);
}

TEST_F(CookieSession, CookiesThatLackWhatTheirNamesPromiseAreNotTaken) {
    const auto peer =
        server(settingCookies({"__Secure-session-token=planted; Path=/",
                               "__host-csrf=planted; Path=/; Secure; Domain=localhost",
                               "=__Host-csrf=planted; Path=/", "real=1; Path=/"}));
    loop.run(own.data(peer->url("/set")));
    ASSERT_EQ(cookiesFor(peer->url()).size(), 1u);
    EXPECT_EQ(cookiesFor(peer->url()).front().name, "real");
    loop.run(own.data(peer->url("/next")));
    EXPECT_EQ(peer->requests().at(1).header("cookie"), "real=1");
}

TEST_F(CookieSession, CookieThatLacksWhatItsNamePromisesReplacesNone) {
    int replies = 0;
    const auto peer = server(MisbehavingServer::answering([&replies](const WireRequest&) {
        return httpReply("{}", ++replies == 1 ? "Set-Cookie: __Secure-a=real; Path=/; Secure\r\n"
                                              : "Set-Cookie: __Secure-a=planted; Path=/\r\n");
    }));
    for (int request = 0; request < 3; ++request)
        loop.run(own.data(peer->url()));
    EXPECT_EQ(peer->requests().at(2).header("cookie"), "__Secure-a=real");
}

TEST_F(CookieSession, SiblingHostCannotPlantACookieOfThisHost) {
    IdentityRequest names;
    names.hosts = {"site.localhost", "evil.site.localhost"};
    std::string port;
    const MisbehavingServer peer(
        authority.issue(names), MisbehavingServer::answering([&port](const WireRequest& request) {
            if (request.target == "/plant")
                return httpReply("",
                                 "Location: https://site.localhost:" + port +
                                     "/end\r\nSet-Cookie: __Host-session-token=planted; Path=/; "
                                     "Secure; Domain=site.localhost\r\n"
                                     "Set-Cookie: wide=1; Path=/; Domain=site.localhost; "
                                     "SameSite=None; Secure\r\n",
                                 "302 Found");
            return httpReply("{}");
        }));
    port = std::to_string(peer.port());
    loop.run(own.data(*Url::parse("https://evil.site.localhost:" + port + "/plant")));
    EXPECT_EQ(peer.requests().back().header("host"), "site.localhost:" + port);
    EXPECT_EQ(peer.requests().back().header("cookie"), "wide=1");
}

TEST_F(CookieSession, CookieOfARedirectIsKept) {
    const auto peer = server(MisbehavingServer::answering([](const WireRequest& request) {
        if (request.target == "/end")
            return httpReply("{}");
        return httpReply("", "Location: /end\r\nSet-Cookie: a=1; Path=/\r\n", "302 Found");
    }));
    loop.run(own.data(peer->url("/start")));
    EXPECT_EQ(peer->requests().at(1).header("cookie"), "a=1");
}

TEST_F(CookieSession, CookieOfADomainIsSentToItsOwnHostWhateverItsPolicy) {
    IdentityRequest names;
    names.hosts = {"site.localhost"};
    const MisbehavingServer peer(
        authority.issue(names),
        settingCookies({"a=1; Path=/; Domain=site.localhost",
                        "b=2; Path=/; Domain=site.localhost; SameSite=Strict"}));
    const Url url = *Url::parse("https://site.localhost:" + std::to_string(peer.port()));
    loop.run(own.data(*Url::parse(url.absoluteString() + "/set")));
    UrlRequest post{url};
    post.method = "POST";
    loop.run(own.data(post));
    EXPECT_EQ(peer.requests().back().header("cookie"), "a=1; b=2");
}

TEST_F(CookieSession, StrictCookieStaysWhenAnotherSiteRedirects) {
    IdentityRequest names;
    names.hosts = {"localhost", "one.localhost", "two.localhost"};
    std::string port;
    const MisbehavingServer peer(
        authority.issue(names), MisbehavingServer::answering([&port](const WireRequest& request) {
            if (request.target == "/set")
                return httpReply("{}", "Set-Cookie: s=1; Path=/; SameSite=Strict\r\n");
            if (request.target == "/start")
                return httpReply("", "Location: https://two.localhost:" + port + "/end\r\n",
                                 "302 Found");
            return httpReply("{}");
        }));
    port = std::to_string(peer.port());
    const auto get = [&](const std::string& host, const std::string& path) {
        loop.run(own.data(*Url::parse("https://" + host + ":" + port + path)));
        return peer.requests().back();
    };
    get("two.localhost", "/set");
    EXPECT_EQ(get("two.localhost", "/own").header("cookie"), "s=1");
    const WireRequest sentOn = get("one.localhost", "/start");
    EXPECT_EQ(sentOn.target, "/end");
    EXPECT_FALSE(sentOn.header("cookie"));
}

TEST_F(CookieSession, ServerMayTakeACookieBack) {
    const auto peer = server(MisbehavingServer::answering([](const WireRequest& request) {
        const std::string line = request.target == "/set" ? "Set-Cookie: a=1; Path=/\r\n"
                                                          : "Set-Cookie: a=; Path=/; Max-Age=0\r\n";
        return httpReply("{}", line);
    }));
    loop.run(own.data(peer->url("/set")));
    ASSERT_EQ(cookiesFor(peer->url()).size(), 1u);
    loop.run(own.data(peer->url("/clear")));
    EXPECT_THAT(cookiesFor(peer->url()), IsEmpty());
}

TEST_F(CookieSession, TwoSessionsShareNothing) {
    const auto peer = server(settingCookies({"a=1; Path=/"}));
    loop.run(own.data(peer->url("/set")));
    const Session other(Session::Cookies::inMemory, trusting(authority));
    EXPECT_THAT(other.cookieStorage()->cookies(peer->url()).value(), IsEmpty());
}

} // namespace kelo::test
