#include "component/LogReader.h"
#include "component/webkit/Descendants.h"
#include "component/webkit/WebKitFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sys/stat.h>

namespace kelo::test {

using platform::HttpCookie;
using platform::SameSitePolicy;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class WebCookie : public WebKitFixture {
protected:
    void set(const HttpCookie& cookie) { loop.run(view->cookieStore().setCookie(cookie)); }
    std::vector<HttpCookie> all() { return loop.run(view->cookieStore().getAllCookies()); }

    static HttpCookie cookie(std::string name, std::string domain = "localhost") {
        HttpCookie result;
        result.name = std::move(name);
        result.value = "value";
        result.domain = std::move(domain);
        result.sameSite = SameSitePolicy::lax;
        return result;
    }
    static std::chrono::sys_seconds inAnHour() {
        return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) +
               std::chrono::hours(1);
    }
    // What the server was sent by the page's own request.
    static std::string lastCookies(const MisbehavingServer& peer) {
        return peer.requests().back().header("cookie").value_or("");
    }

    const Url anywhere = *Url::parse("https://localhost");
};

TEST_F(WebCookie, EmptyStoreIsEmpty) {
    makeView(anywhere);
    EXPECT_THAT(all(), IsEmpty());
}

TEST_F(WebCookie, EveryAttributeComesBack) {
    makeView(anywhere);
    HttpCookie plain = cookie("plain");
    HttpCookie path = cookie("path");
    path.path = "/api/deep";
    HttpCookie secure = cookie("secure");
    secure.secure = true;
    secure.sameSite = SameSitePolicy::none;
    HttpCookie httpOnly = cookie("httpOnly");
    httpOnly.httpOnly = true;
    HttpCookie strict = cookie("strict");
    strict.sameSite = SameSitePolicy::strict;
    HttpCookie expires = cookie("expires");
    expires.expires = inAnHour();
    HttpCookie wide = cookie("wide", ".assistant.example.com");
    HttpCookie host = cookie("__Host-token");
    host.secure = true;
    host.httpOnly = true;
    host.value = "a.b-c_d%20e=f";
    for (const HttpCookie& one : {plain, path, secure, httpOnly, strict, expires, wide, host}) {
        set(one);
        const auto stored = all();
        const auto found = std::find_if(stored.begin(), stored.end(),
                                        [&](const HttpCookie& c) { return c.name == one.name; });
        ASSERT_NE(found, stored.end()) << one.name;
        EXPECT_EQ(*found, one) << one.name;
    }
    EXPECT_EQ(all().size(), 8u);
}

TEST_F(WebCookie, WithoutAPolicyACookieIsKeptAsALaxOne) {
    makeView(anywhere);
    HttpCookie unspecified = cookie("a");
    unspecified.sameSite = SameSitePolicy::unspecified;
    set(unspecified);
    EXPECT_THAT(all(), ElementsAre(cookie("a")));
}

// No store takes a cookie for a whole top-level domain.
TEST_F(WebCookie, CookieThatTheStoreDropsIsNamedInTheLog) {
    const LogReader log;
    makeView(anywhere);
    HttpCookie past = cookie("past");
    past.expires = inAnHour() - std::chrono::hours(2);
    set(cookie("kept"));
    set(past);
    set(cookie("dropped", ".com"));
    EXPECT_THAT(log.complaints(),
                ElementsAre("The web view did not keep the cookie dropped of .com"));
}

TEST_F(WebCookie, SameNameReplaces) {
    makeView(anywhere);
    set(cookie("a"));
    HttpCookie newer = cookie("a");
    newer.value = "newer";
    set(newer);
    EXPECT_THAT(all(), ElementsAre(newer));
}

TEST_F(WebCookie, HandedOverCookiesAreSentByThePage) {
    const auto peer = site({{"/", "hello"}});
    makeView(peer->url());
    HttpCookie token = cookie("__Secure-session-token");
    token.secure = true;
    token.httpOnly = true;
    HttpCookie host = cookie("__Host-csrf");
    host.secure = true;
    host.sameSite = SameSitePolicy::strict;
    HttpCookie foreign = cookie("foreign", "example.org");
    set(token);
    set(host);
    set(foreign);
    open(peer->url("/"));
    EXPECT_THAT(lastCookies(*peer), HasSubstr("__Secure-session-token=value"));
    EXPECT_THAT(lastCookies(*peer), HasSubstr("__Host-csrf=value"));
    EXPECT_THAT(lastCookies(*peer), Not(HasSubstr("foreign")));
    EXPECT_EQ(evaluate("document.cookie"), "__Host-csrf=value");
}

TEST_F(WebCookie, CookiesThatThePageSetsAreRead) {
    const MisbehavingServer peer(
        identity, MisbehavingServer::answering([](const WireRequest&) {
            return page("hello",
                        "Set-Cookie: __Host-a=1; Path=/; Secure; HttpOnly; SameSite=Strict\r\n"
                        "Set-Cookie: b=2; Path=/x; SameSite=Lax; "
                        "Expires=Fri, 01 Jan 2100 00:00:00 GMT\r\n");
        }));
    makeView(peer.url());
    open(peer.url("/"));
    HttpCookie a = cookie("__Host-a");
    a.value = "1";
    a.secure = true;
    a.httpOnly = true;
    a.sameSite = SameSitePolicy::strict;
    HttpCookie b = cookie("b");
    b.value = "2";
    b.path = "/x";
    b.expires = std::chrono::sys_seconds(std::chrono::seconds(4102444800));
    EXPECT_THAT(all(), testing::UnorderedElementsAre(a, b));
}

TEST_F(WebCookie, CookieThatLacksWhatItsNamePromisesIsNotHandedOver) {
    makeView(anywhere);
    HttpCookie real = cookie("__Secure-session-token");
    real.secure = true;
    set(real);
    HttpCookie insecure = cookie("__Secure-session-token");
    insecure.value = "planted";
    set(insecure);
    HttpCookie wide = cookie("__host-session-token", ".assistant.example.com");
    wide.secure = true;
    set(wide);
    ASSERT_EQ(all().size(), 1u);
    EXPECT_EQ(all().front().value, "value");
}

TEST_F(WebCookie, PlantedCookiesAreNotReadAndDoNotStay) {
    const MisbehavingServer peer(
        identity, MisbehavingServer::answering([](const WireRequest& request) {
            if (request.target != "/plant")
                return page("hello");
            // The request follows the cookie on its way to the store.
            return page("<script>document.cookie='__secure-b=planted; path=/';"
                        "const after = new XMLHttpRequest(); after.open('GET', '/', false);"
                        "after.send();</script>",
                        "Set-Cookie: __Secure-session-token=planted; Path=/\r\n"
                        "Set-Cookie: __Host-c=planted; Path=/plant; Secure\r\n"
                        "Set-Cookie: real=1; Path=/\r\n");
        }));
    makeView(peer.url());
    open(peer.url("/plant"));
    const auto read = all();
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read.front().name, "real");
    open(peer.url("/plant/again"));
    EXPECT_EQ(lastCookies(peer), "real=1");
}

TEST_F(WebCookie, TwoViewsShareTheStore) {
    makeView(anywhere);
    set(cookie("a"));
    webkit::WebKitEmbeddedView other(*session, {}, {});
    EXPECT_THAT(loop.run(other.cookieStore().getAllCookies()), ElementsAre(cookie("a")));
}

TEST_F(WebCookie, CookieWithAnExpirySurvivesARestartAndOthersDoNot) {
    makeView(anywhere);
    HttpCookie kept = cookie("__Secure-session-token");
    kept.secure = true;
    kept.httpOnly = true;
    kept.expires = inAnHour();
    HttpCookie wide = cookie("wide", ".assistant.example.com");
    wide.expires = inAnHour();
    wide.sameSite = SameSitePolicy::strict;
    set(kept);
    set(wide);
    set(cookie("session"));
    endSession();
    makeView(anywhere);
    std::vector<HttpCookie> read = all();
    for (HttpCookie& found : read) {
        // The library keeps an expiry as a span and rounds it up when it is read in another second.
        ASSERT_TRUE(found.expires);
        EXPECT_LE(*found.expires - *kept.expires, std::chrono::seconds(1));
        EXPECT_GE(*found.expires - *wide.expires, std::chrono::seconds(-1));
        found.expires = found.name == kept.name ? kept.expires : wide.expires;
    }
    EXPECT_THAT(read, testing::UnorderedElementsAre(kept, wide));
}

TEST_F(WebCookie, CookieIsOnTheDiskAtOnceAndSurvivesACrash) {
    const auto peer = site({{"/", "hello"}});
    makeView(peer->url());
    open(peer->url("/"));
    HttpCookie kept = cookie("kept");
    kept.expires = inAnHour();
    set(kept);
    ASSERT_GT(killDescendants("WebKitNetworkPr"), 0);
    open(peer->url("/"));
    EXPECT_EQ(lastCookies(*peer), "kept=value");
    EXPECT_THAT(all(), ElementsAre(kept));
}

TEST_F(WebCookie, FoldersAreForTheirOwnerAlone) {
    makeView(anywhere);
    for (const auto& path : {folder / "data" / "web", folder / "cache"}) {
        struct stat status = {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0700u) << path;
    }
}

} // namespace kelo::test
