#include "DemoFixture.h"

#include <fstream>

namespace kelo::demo {
namespace {

class PagesOfTheService : public DemoFixture {};

TEST_F(PagesOfTheService, SignedOutHomeRedirectsToLogin) {
    const auto response = browser->get("/");
    EXPECT_EQ(response.status, 303u);
    EXPECT_EQ(response.header("location"), "/login");
}

TEST_F(PagesOfTheService, LoginPageLabelsItsFieldsAndButtons) {
    const auto page = browser->get("/login").body;
    for (const char* part : {"<h1>Sign in to Kelo</h1>", "<label for=\"email\">Email</label>",
                             "<label for=\"password\">Password</label>", ">Sign in</button>",
                             ">Sign in with passkey</button>", "<html lang=\"en\">"})
        EXPECT_NE(page.find(part), std::string::npos) << part;
}

TEST_F(PagesOfTheService, PasswordSignsInAndLeadsHome) {
    const auto response = signInWithPassword(*browser, "ADA@example.org");
    EXPECT_EQ(response.status, 303u);
    EXPECT_EQ(response.header("location"), "/");
    EXPECT_NE(browser->get("/").body.find("<h1>Welcome, Ada</h1>"), std::string::npos);
    EXPECT_EQ(browser->get("/login").header("location"), "/") << "already signed in";
}

TEST_F(PagesOfTheService, WrongPasswordIsSaidInThePage) {
    for (const char* email : {"ada@example.org", "nobody@example.org"}) {
        const auto response = signInWithPassword(*browser, email, "guess");
        EXPECT_EQ(response.status, 401u);
        EXPECT_NE(response.body.find("role=\"alert\">That email and password do not match"),
                  std::string::npos);
        EXPECT_NE(response.body.find(std::string("value=\"") + email), std::string::npos);
        EXPECT_EQ(response.setCookie(sessionCookie), "");
    }
}

TEST_F(PagesOfTheService, WhatSomeoneTypesIsNeverMarkup) {
    const auto body = signInWithPassword(*browser, "\"><script>alert(1)</script>", "x").body;
    EXPECT_EQ(body.find("<script>alert"), std::string::npos);
    EXPECT_NE(body.find("&quot;&gt;&lt;script&gt;"), std::string::npos);
}

TEST_F(PagesOfTheService, LoginWithoutCsrfTokenIsRefused) {
    const auto response =
        browser->postForm("/login", {{"email", "ada@example.org"}, {"password", adaPassword}});
    EXPECT_EQ(response.status, 403u);
    EXPECT_EQ(response.setCookie(sessionCookie), "");
}

TEST_F(PagesOfTheService, EleventhWrongPasswordInAMinuteHasToWait) {
    for (int count = 0; count < 10; ++count)
        ASSERT_EQ(signInWithPassword(*browser, "ada@example.org", "guess").status, 401u);
    const auto response = signInWithPassword(*browser);
    EXPECT_EQ(response.status, 429u);
    EXPECT_NE(response.body.find("Too many attempts"), std::string::npos);
}

TEST_F(PagesOfTheService, FailedSignInIsSaidInThePage) {
    EXPECT_NE(browser->get("/login?error=CredentialsSignin").body.find("role=\"alert\""),
              std::string::npos);
    EXPECT_EQ(browser->get("/login?errors=x").body.find("role=\"alert\""), std::string::npos);
}

TEST_F(PagesOfTheService, SignOutEndsTheSession) {
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    HttpsClient copy(authority(), service->origin());
    copy.cookies = browser->cookies;
    const auto token = browser->get("/api/csrf").json().at("token").get<std::string>();
    const auto response = browser->postForm("/logout", {{"csrfToken", token}});
    EXPECT_EQ(response.status, 303u);
    EXPECT_EQ(response.header("location"), "/login");
    EXPECT_FALSE(browser->cookies.contains(sessionCookie));
    EXPECT_EQ(copy.get("/api/csrf").status, 401u) << "the token itself must be worthless";
}

TEST_F(PagesOfTheService, SignOutWithoutCsrfTokenIsRefused) {
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    EXPECT_EQ(browser->postForm("/logout", {{"csrfToken", "x"}}).status, 403u);
    EXPECT_EQ(browser->post("/logout").status, 403u);
    EXPECT_EQ(browser->get("/logout").status, 405u);
    EXPECT_EQ(browser->get("/api/csrf").status, 200u);
}

TEST_F(PagesOfTheService, WidgetSaysWhetherSomeoneIsSignedIn) {
    EXPECT_NE(browser->get("/widget").body.find("You are not signed in"), std::string::npos);
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    const auto page = browser->get("/widget").body;
    for (const char* part : {"Signed in as Ada Lovelace", ">Start microphone</button>",
                             ">Close</button>", "role=\"meter\""})
        EXPECT_NE(page.find(part), std::string::npos) << part;
}

TEST_F(PagesOfTheService, StrangerIsThereOnlyWhenAskedFor) {
    EXPECT_EQ(browser->get("/stranger").status, 404u);
    EXPECT_EQ(browser->get("/widget").body.find("<iframe"), std::string::npos);
    startService({"--stranger"});
    const auto widget = browser->get("/widget");
    EXPECT_NE(widget.body.find("src=\"/stranger\" sandbox=\"allow-scripts\""), std::string::npos);
    EXPECT_NE(widget.header("content-security-policy").find("frame-src 'self'"), std::string::npos);
    const auto stranger = browser->get("/stranger");
    EXPECT_EQ(stranger.status, 200u);
    EXPECT_NE(stranger.header("content-security-policy").find("sandbox allow-scripts"),
              std::string::npos);
}

TEST_F(PagesOfTheService, UnknownPathsAreSaidToBeUnknown) {
    const auto page = browser->get("/nowhere");
    EXPECT_EQ(page.status, 404u);
    EXPECT_NE(page.body.find("Page not found"), std::string::npos);
    const auto endpoint = browser->post("/api/nowhere");
    EXPECT_EQ(endpoint.status, 404u);
    EXPECT_EQ(endpoint.reason(), "There is no such endpoint");
    EXPECT_EQ(browser->get("/assets/../login.html").status, 404u);
}

TEST_F(PagesOfTheService, OtherMethodsAreNamed) {
    const auto response = browser->send("DELETE", "/login", "", "");
    EXPECT_EQ(response.status, 405u);
    EXPECT_EQ(response.header("allow"), "GET, HEAD, POST");
    EXPECT_EQ(browser->get("/api/account/passkey/auth/options").header("allow"), "POST");
}

TEST_F(PagesOfTheService, HeadIsGetWithoutABody) {
    const auto response = browser->send("HEAD", "/login", "", "");
    EXPECT_EQ(response.status, 200u);
    EXPECT_EQ(response.body, "");
    EXPECT_GT(std::stoi(response.header("content-length")), 500);
}

TEST_F(PagesOfTheService, DynamicRepliesAreNeverKept) {
    for (const char* path : {"/", "/login", "/widget", "/nowhere", "/api/csrf", "/api/auth/csrf"})
        EXPECT_EQ(browser->get(path).header("cache-control"), "no-store") << path;
}

TEST_F(PagesOfTheService, AssetsAreAskedForAgainAndNotSentTwice) {
    const auto first = browser->get("/assets/style.css");
    EXPECT_EQ(first.header("content-type"), "text/css; charset=utf-8");
    EXPECT_EQ(first.header("cache-control"), "no-cache");
    const auto second =
        browser->get("/assets/style.css", {{"If-None-Match", first.header("etag")}});
    EXPECT_EQ(second.status, 304u);
    EXPECT_EQ(second.body, "");
}

TEST_F(PagesOfTheService, PolicyAllowsNothingInlineAndNoOtherSite) {
    for (const char* path : {"/login", "/widget", "/nowhere", "/api/csrf"}) {
        const auto response = browser->get(path);
        const auto policy = response.header("content-security-policy");
        EXPECT_NE(policy.find("default-src 'none'"), std::string::npos);
        EXPECT_NE(policy.find("frame-ancestors 'none'"), std::string::npos);
        EXPECT_EQ(policy.find("unsafe"), std::string::npos);
        EXPECT_EQ(response.header("x-content-type-options"), "nosniff");
        EXPECT_EQ(response.body.find("<style"), std::string::npos);
        EXPECT_EQ(response.body.find(" style="), std::string::npos);
        EXPECT_EQ(response.body.find(" onclick="), std::string::npos);
    }
}

TEST_F(PagesOfTheService, AddressOfTheSameComputerLeadsToTheName) {
    const auto response = browser->get("/login", {{"Host", "127.0.0.1:" + service->port()}});
    EXPECT_EQ(response.status, 303u);
    EXPECT_EQ(response.header("location"), service->origin() + "/login");
}

TEST_F(PagesOfTheService, OversizeBodyIsRefused) {
    const std::string large(65 * 1024, 'x');
    const auto response = browser->post("/login", "application/x-www-form-urlencoded", large);
    EXPECT_EQ(response.status, 413u);
    EXPECT_EQ(response.reason(), "The request is too large");
    EXPECT_EQ(browser->get("/login").status, 200u);
}

TEST_F(PagesOfTheService, GalleryIsServedOnlyOnRequestAndNothingBesideIt) {
    EXPECT_EQ(browser->get("/gallery/index.html").status, 404u);
    const test::TemporaryFolder folder;
    std::ofstream(folder.path() / "index.html") << "<script>1</script>";
    std::ofstream(folder.path() / "style.css") << "p {}";
    service.reset();
    startService({"--gallery", folder.path().string()});
    const auto page = browser->get("/gallery/index.html");
    EXPECT_EQ(page.body, "<script>1</script>");
    EXPECT_EQ(page.header("content-type"), "text/html; charset=utf-8");
    EXPECT_NE(page.header("content-security-policy").find("'unsafe-inline'"), std::string::npos);
    EXPECT_EQ(browser->get("/gallery/style.css").header("content-type"), "text/css; charset=utf-8");
    EXPECT_EQ(browser->get("/gallery/../etc/passwd").status, 404u);
    EXPECT_EQ(browser->get("/gallery/other.html").status, 404u);
    EXPECT_EQ(browser->get("/login").header("content-security-policy").find("'unsafe-inline'"),
              std::string::npos);
}

} // namespace
} // namespace kelo::demo
