#include "component/webkit/WindowFixture.h"

namespace kelo::test {

namespace {

constexpr const char* shownPage = "<title>page</title><body>the page<script>"
                                  "onhashchange = () => document.title = 'at ' + location.hash;"
                                  "</script>";

} // namespace

/// A page whose window is closed lives on, and goes where its scripts take it.
class ClosedWindow : public WindowFixture {
protected:
    void SetUp() override {
        server = site({{"/", shownPage}, {"/next", "<title>next</title>"}});
        makeView(server->url());
        view->setAllowsBackForwardNavigationGestures(true);
        showInWindow();
        open(server->url("/"));
        leaveWindow();
    }

    bool gesturesAreOn() const {
        return webkit_settings_get_enable_back_forward_navigation_gestures(
            webkit_web_view_get_settings(native()));
    }

    std::unique_ptr<MisbehavingServer> server;
};

TEST_F(ClosedWindow, PageGoesToAnotherAddress) {
    evaluate("location = '/next'; 1");
    EXPECT_TRUE(waitForTitle("next"));
}

TEST_F(ClosedWindow, PageAddsToItsHistory) {
    evaluate("history.pushState({}, '', '/elsewhere'); document.title = 'pushed'; 1");
    EXPECT_TRUE(waitForTitle("pushed"));
    EXPECT_EQ(evaluate("location.pathname"), "/elsewhere");
}

TEST_F(ClosedWindow, PageGoesToAPlaceWithinItself) {
    evaluate("location.hash = 'place'; 1");
    EXPECT_TRUE(waitForTitle("at #place"));
}

TEST_F(ClosedWindow, PageIsLoadedAgain) {
    const auto before = recorder->finished.size();
    evaluate("location.reload(); 1");
    EXPECT_TRUE(waitForFinished(before + 1));
}

TEST_F(ClosedWindow, PageGoesBack) {
    evaluate("location = '/next'; 1");
    ASSERT_TRUE(waitForTitle("next"));
    evaluate("history.back(); 1");
    EXPECT_TRUE(waitForTitle("page"));
}

TEST_F(ClosedWindow, AddressIsLoadedFromOutsideThePage) {
    open(server->url("/next"));
    EXPECT_EQ(evaluate("document.title"), "next");
}

TEST_F(ClosedWindow, SwipesGoBackAgainOnceAWindowShowsThePage) {
    EXPECT_FALSE(gesturesAreOn());
    showInWindow();
    EXPECT_TRUE(gesturesAreOn());
    evaluate("location = '/next'; 1");
    EXPECT_TRUE(waitForTitle("next"));
}

TEST_F(ClosedWindow, SwipesStayOffInAViewThatDoesNotAllowThem) {
    view->setAllowsBackForwardNavigationGestures(false);
    showInWindow();
    EXPECT_FALSE(gesturesAreOn());
}

} // namespace kelo::test
