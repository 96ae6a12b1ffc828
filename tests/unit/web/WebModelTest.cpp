#include "web/WebModel.h"
#include "deployment/Deployment.h"
#include "fakes/ScopedTestDesktop.h"
#include "web/UserScript.h"
#include "web/WebView.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelo {
namespace {

using platform::HttpCookie;
using Calls = std::vector<std::string>;

const std::string base(deployment::serviceOrigin);

struct WebModelTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::shared_ptr<web::WebModel> web = web::WebModel::make();
    fakes::FakeWebView& view = *desktop.webViews.at(0);

    ~WebModelTest() override { dropSpawnedTasks(); }

    /// What the view was asked since the last look.
    Calls newCalls() { return std::exchange(view.calls, {}); }
};

TEST_F(WebModelTest, BuildsOneViewThatLoadsTheBaseUrlAtOnce) {
    EXPECT_EQ(desktop.webViews.size(), 1u);
    EXPECT_EQ(view.frame, platform::Rectangle{});
    EXPECT_EQ(newCalls(), (Calls{"setNavigationDelegate", "allow gestures", "load " + base}));
    EXPECT_EQ(view.navigationDelegate.lock(), web);
    EXPECT_EQ(web->path.get(), "");
    EXPECT_TRUE(web->cachedCookies.empty());
}

TEST_F(WebModelTest, BaseUrlRequestHasSixtySecondsAndTheProtocolsPolicy) {
    const auto& request = view.loads.at(0);
    EXPECT_EQ(request.url.absoluteString(), base);
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.cachePolicy, platform::CachePolicy::useProtocolCachePolicy);
    EXPECT_TRUE(request.headers.empty());
}

TEST_F(WebModelTest, ViewKeepsItsDataAndRunsTheUserScriptInEveryFrame) {
    const auto& configuration = view.configuration;
    EXPECT_EQ(configuration.websiteDataStore, platform::WebsiteDataStore::persistentDefault);
    EXPECT_TRUE(configuration.allowsContentJavaScript);
    ASSERT_EQ(configuration.userScripts.size(), 1u);
    EXPECT_EQ(configuration.userScripts[0].source, web::hidePasskeyButtonsScript);
    EXPECT_EQ(configuration.userScripts[0].injectionTime, platform::InjectionTime::atDocumentEnd);
    EXPECT_FALSE(configuration.userScripts[0].forMainFrameOnly);
}

TEST_F(WebModelTest, PagesGetNoWayToPostToTheProgramAndNoPermissions) {
    EXPECT_TRUE(view.configuration.scriptMessageHandlers.empty());
    EXPECT_EQ(view.interfaceDelegate.lock(), nullptr);
    EXPECT_EQ(std::count(view.calls.begin(), view.calls.end(), "setUserInterfaceDelegate"), 0);
}

TEST_F(WebModelTest, WrapperGivesTheSameViewAtEveryCall) {
    const web::WebView wrapper{web};
    EXPECT_EQ(wrapper.makeView(), web->webView);
    EXPECT_EQ(web::WebView{web}.makeView(), wrapper.makeView());
}

TEST_F(WebModelTest, NoCookiesStillReloadTheBaseUrl) {
    newCalls();
    fakes::start(web->injectCookies({}));
    desktop.loop.runUntilIdle();
    EXPECT_EQ(newCalls(), Calls{"load " + base});
}

TEST_F(WebModelTest, CookiesAreSetOneByOneAndTheReloadComesLast) {
    newCalls();
    view.holdsCookieCompletions = true;
    fakes::start(web->injectCookies({{"a", "1", "h"}, {"b", "2", "h"}, {"c", "3", "h"}}));
    for (const char* name : {"a", "b", "c"}) {
        desktop.loop.runUntilIdle();
        EXPECT_EQ(newCalls(), Calls{std::string("set ") + name});
        desktop.loop.runUntilIdle();
        EXPECT_EQ(newCalls(), Calls{}) << "before the completion";
        view.pendingCookie->resume();
    }
    desktop.loop.runUntilIdle();
    EXPECT_EQ(newCalls(), Calls{"load " + base});
}

TEST_F(WebModelTest, CookiesReachTheStoreWithAllTheirAttributes) {
    using namespace std::chrono;
    const HttpCookie cookie{"__Secure-x",
                            "v",
                            ".localhost",
                            "/app",
                            sys_days(2027y / 1 / 1),
                            true,
                            true,
                            platform::SameSitePolicy::lax};
    fakes::start(web->injectCookies({cookie}));
    desktop.loop.runUntilIdle();
    EXPECT_EQ(view.cookies, std::vector<HttpCookie>{cookie});
}

TEST_F(WebModelTest, CurrentCookiesAreUnfilteredAndInTheStoresOrder) {
    view.cookies = {{"z", "1", "other.example"}, {"a", "2", "localhost"}, {"a", "3", "localhost"}};
    const auto flow = fakes::start(web->currentCookies());
    desktop.loop.runUntilIdle();
    EXPECT_EQ(flow->value, view.cookies);
}

TEST_F(WebModelTest, FinishedNavigationSetsThePathWithoutQueryAndFragment) {
    view.finishNavigation("https://host/a/b?query=/login#fragment");
    EXPECT_EQ(web->path.get(), "/a/b");
}

TEST_F(WebModelTest, FinishedNavigationDecodesThePath) {
    view.finishNavigation("https://host/log%69n%20page");
    EXPECT_EQ(web->path.get(), "/login page");
}

TEST_F(WebModelTest, FinishedNavigationWithoutAUrlEmptiesThePath) {
    view.finishNavigation("https://host/a");
    view.finishNavigation(nullptr);
    EXPECT_EQ(web->path.get(), "");
}

TEST_F(WebModelTest, PathIsPublishedInsideTheCallbackAndCookiesAreReadLater) {
    int told = 0;
    const auto observation = web->observe([&] { ++told; });
    newCalls();
    view.cookies = {{"a", "1", "localhost"}, {"b", "2", "other.example"}};
    view.finishNavigation("https://host/a");
    EXPECT_EQ(told, 1);
    EXPECT_EQ(newCalls(), Calls{});
    desktop.loop.runUntilIdle();
    EXPECT_EQ(newCalls(), Calls{"get all cookies"});
}

TEST_F(WebModelTest, CacheHoldsEverythingInTheStoreAfterANavigation) {
    view.cookies = {{"a", "1", "localhost"}, {"b", "2", "other.example"}};
    view.finishNavigation("https://host/");
    desktop.loop.runUntilIdle();
    EXPECT_EQ(web->cachedCookies, view.cookies);
    view.cookies = {{"c", "3", "localhost"}};
    view.finishNavigation("https://host/");
    desktop.loop.runUntilIdle();
    EXPECT_EQ(web->cachedCookies, view.cookies);
}

TEST_F(WebModelTest, ViewHoldsTheModelWeakly) {
    const auto webView = desktop.webViews.at(0);
    web.reset();
    webView->finishNavigation("https://host/");
    EXPECT_TRUE(webView->navigationDelegate.expired());
}

} // namespace
} // namespace kelo
