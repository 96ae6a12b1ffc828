#include "component/webkit/WindowFixture.h"

namespace kelo::test {

namespace {

constexpr const char* shownPage = "<title>page</title><body>the page<script>"
                                  "onhashchange = () => document.title = 'at ' + location.hash;"
                                  "</script>";

constexpr const char* restlessPage =
    "<title>restless</title><script>frames = 0; ticks = 0;"
    "const frame = () => { ++frames; requestAnimationFrame(frame); };"
    "frame(); setInterval(() => ++ticks, 10);</script>";

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

/// A page that asks for every frame there is, and for a timer each 10 ms.
class RestlessPage : public WindowFixture {
protected:
    void SetUp() override {
        server = site({{"/", restlessPage}});
        makeView(server->url());
        showInWindow();
        open(server->url("/"));
    }

    struct Seconds {
        int frames;
        int ticks;
    };
    /// What the page has had in two seconds of its own clock.
    Seconds twoSeconds() {
        const std::string over = "over " + std::to_string(++times);
        evaluate("frames = ticks = 0;"
                 "setTimeout(() => { document.title = '" +
                 over + "' }, 2000); 1");
        EXPECT_TRUE(waitForTitle(over));
        return {std::stoi(evaluate("frames")), std::stoi(evaluate("ticks"))};
    }
    /// Waits until the page knows that nobody sees it.
    bool waitUntilHidden() { return waitForScript("document.visibilityState", "hidden"); }

    std::unique_ptr<MisbehavingServer> server;
    int times = 0;
};

TEST_F(RestlessPage, MovesWhileItIsSeen) {
    const Seconds seen = twoSeconds();
    EXPECT_GT(seen.frames, 20);
    EXPECT_GT(seen.ticks, 40);
}

TEST_F(RestlessPage, SleepsOnceItsWindowIsClosed) {
    leaveWindow();
    ASSERT_TRUE(waitUntilHidden());
    const Seconds seen = twoSeconds();
    EXPECT_EQ(seen.frames, 0);
    EXPECT_LE(seen.ticks, 20) << "it has asked for 200";
}

TEST_F(RestlessPage, SleepsWhileItsWindowIsHiddenAndMovesInTheNextOne) {
    gtk_widget_set_visible(window, FALSE);
    ASSERT_TRUE(waitUntilHidden());
    const Seconds hidden = twoSeconds();
    EXPECT_EQ(hidden.frames, 0);
    EXPECT_LE(hidden.ticks, 20) << "it has asked for 200";
    gtk_widget_set_visible(window, TRUE);
    ASSERT_TRUE(waitForScript("document.visibilityState", "visible"));
    EXPECT_GT(twoSeconds().frames, 20);
}

} // namespace kelo::test
