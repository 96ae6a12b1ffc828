#include "web/ContentView.h"
#include "base/Failure.h"
#include "fakes/ScopedTestDesktop.h"
#include "passkey/PasskeyError.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

struct ContentViewTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::shared_ptr<web::WebModel> web = web::WebModel::make();
    std::shared_ptr<passkey::PasskeyAuthenticator> passkey =
        std::make_shared<passkey::PasskeyAuthenticator>();
    fakes::FakeWebView& view = *desktop.webViews.at(0);
    fakes::FakeHttpSession& session = *desktop.ephemeralSessions.at(0);

    ~ContentViewTest() override { dropSpawnedTasks(); }

    platform::WebContentDescription body() const { return web::ContentView{web, passkey}.body(); }
    void show(const std::string& path) { view.finishNavigation(("https://host" + path).c_str()); }
    void press() {
        body().overlay.value().button.action();
        desktop.loop.runUntilIdle();
    }
    std::string label() const { return body().overlay.value().button.label; }
    bool enabled() const { return body().overlay.value().button.enabled; }
    std::optional<std::string> errorText() const {
        const auto text = body().overlay.value().text;
        return text ? std::optional(text->text) : std::nullopt;
    }
    void letServiceAccept() {
        session.reply(200, R"({"challenge":"AAEC"})");
        session.reply(200, R"({"csrfToken":"token"})");
        session.reply(200, "{}");
        session.storedCookies = {{"csrf", "c", "localhost"}, {"session-token", "x", "localhost"}};
    }
    void confirmSheet() {
        desktop.controllers.back()->complete(
            {platform::PlatformAssertionCredential{{1}, {2}, Bytes{3}, Bytes{4}, Bytes{5}}});
        desktop.loop.runUntilIdle();
    }
    void cancelSheet() {
        desktop.controllers.back()->fail(std::make_exception_ptr(
            Failure(FailureKind::cancelled, "The passkey request was cancelled.")));
        desktop.loop.runUntilIdle();
    }
};

TEST_F(ContentViewTest, EmptyPathHasNoOverlay) {
    EXPECT_FALSE(body().overlay);
}

TEST_F(ContentViewTest, OverlayIsThereExactlyWhileThePathBeginsWithLogin) {
    for (const char* path : {"/login", "/login/", "/loginhelp", "/login/mfa?x#y", "/log%69n"}) {
        show(path);
        EXPECT_TRUE(body().overlay) << path;
    }
    for (const char* path : {"", "/", "/account", "/Login", "/a/login", "?next=/login"}) {
        show(path);
        EXPECT_FALSE(body().overlay) << path;
    }
}

TEST_F(ContentViewTest, WebViewFillsAWindowOfAtLeast800By600) {
    EXPECT_EQ(body().webView, web->webView);
    EXPECT_EQ(body().minimumSize, (platform::Size{800, 600}));
}

TEST_F(ContentViewTest, OverlayHasItsMeasures) {
    show("/login");
    const auto overlay = body().overlay.value();
    EXPECT_EQ(overlay.spacing, 6);
    EXPECT_EQ(overlay.padding, 16);
    EXPECT_EQ(overlay.cornerRadius, 12);
    EXPECT_EQ(overlay.bottomPadding, 28);
    EXPECT_EQ(overlay.button.labelMaximumWidth, 320);
    EXPECT_EQ(overlay.button.systemImage, "person.badge.key");
    EXPECT_EQ(overlay.button.controlSize, platform::ControlSize::large);
    EXPECT_EQ(overlay.button.style, platform::ButtonStyle::borderedProminent);
}

TEST_F(ContentViewTest, AtRestTheButtonSignsIn) {
    show("/login");
    EXPECT_EQ(label(), "Sign in with passkey");
    EXPECT_TRUE(enabled());
    EXPECT_EQ(errorText(), std::nullopt);
}

TEST_F(ContentViewTest, ErrorTextIsShownInRedCaptionAsItIs) {
    show("/login");
    passkey->errorMessage = "Passkey was not accepted.";
    const auto text = body().overlay->text.value();
    EXPECT_EQ(text.text, "Passkey was not accepted.");
    EXPECT_EQ(text.font, platform::TextFont::caption);
    EXPECT_EQ(text.color, platform::TextColor::red);
    EXPECT_TRUE(enabled());
}

TEST_F(ContentViewTest, EmptyErrorTextIsPresentToo) {
    show("/login");
    passkey->errorMessage = "";
    EXPECT_EQ(errorText(), "");
}

TEST_F(ContentViewTest, PressingWaitsDisabledUntilTheSignInEnds) {
    show("/login");
    passkey->errorMessage = "old";
    session.reply(200, R"({"challenge":"AAEC"})");
    press();
    EXPECT_EQ(label(), "Waiting for passkey…");
    EXPECT_FALSE(enabled());
    EXPECT_EQ(errorText(), std::nullopt);
    cancelSheet();
    EXPECT_EQ(label(), "Sign in with passkey");
    EXPECT_TRUE(enabled());
}

TEST_F(ContentViewTest, ButtonReturnsBeforeTheSignInStarts) {
    show("/login");
    body().overlay->button.action();
    EXPECT_FALSE(passkey->busy);
    session.reply(500, "");
    desktop.loop.runUntilIdle();
    EXPECT_EQ(errorText(), "Could not start passkey login.");
}

TEST_F(ContentViewTest, CancelledSheetShowsThePlatformsText) {
    show("/login");
    session.reply(200, R"({"challenge":"AAEC"})");
    press();
    cancelSheet();
    EXPECT_EQ(errorText(), "The passkey request was cancelled.");
}

TEST_F(ContentViewTest, SuccessHandsEveryCookieToTheWebViewAndReloads) {
    show("/login");
    letServiceAccept();
    press();
    view.calls.clear();
    confirmSheet();
    EXPECT_EQ(view.cookies, *session.storedCookies);
    EXPECT_EQ(view.calls.back(), "load " + view.loads.at(0).url.absoluteString());
    EXPECT_EQ(errorText(), std::nullopt);
}

TEST_F(ContentViewTest, OverlayLeavesWithTheLoginPage) {
    show("/login");
    letServiceAccept();
    press();
    confirmSheet();
    EXPECT_TRUE(body().overlay);
    show("/");
    EXPECT_FALSE(body().overlay);
}

TEST_F(ContentViewTest, FailedSignInHandsNothingOverAndIsNotRetried) {
    show("/login");
    session.reply(401, "");
    press();
    EXPECT_TRUE(view.cookies.empty());
    EXPECT_EQ(view.loads.size(), 1u);
    EXPECT_EQ(session.sent.size(), 1u);
    EXPECT_TRUE(desktop.fileSystem().calls.empty());
}

TEST_F(ContentViewTest, ErrorStaysUntilTheNextTry) {
    show("/login");
    session.reply(401, "");
    press();
    show("/");
    show("/login");
    EXPECT_EQ(errorText(), "Could not start passkey login.");
    session.holdNext();
    press();
    EXPECT_EQ(errorText(), std::nullopt);
}

} // namespace
} // namespace kelo
