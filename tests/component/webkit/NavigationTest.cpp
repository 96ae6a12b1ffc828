#include "component/webkit/Descendants.h"
#include "component/webkit/WebKitFixture.h"
#include "linux/webkit/navigation/LoadErrors.h"

#include <gmock/gmock.h>

#include <atomic>

namespace kelo::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Navigation = WebKitFixture;

TEST_F(Navigation, PageUnderTheTrustedAuthorityIsShown) {
    const auto peer = site({{"/", "<title>Home</title>hello"}});
    makeView(peer->url());
    EXPECT_FALSE(view->url());
    open(peer->url("/"));
    EXPECT_EQ(pageText(), "hello");
    EXPECT_THAT(recorder->finished, ElementsAre(peer->origin() + "/"));
}

TEST_F(Navigation, PathIsDecodedWithoutQueryAndFragment) {
    const auto peer = site({{"/a/b%20c?x=1", "one"}});
    makeView(peer->url());
    open(peer->url("/a/b%20c?x=1#part"));
    EXPECT_EQ(view->url()->path(), "/a/b c");
    EXPECT_EQ(view->url()->absoluteString(), peer->origin() + "/a/b%20c?x=1#part");
}

TEST_F(Navigation, RedirectFinishesOnceAtItsEnd) {
    const MisbehavingServer peer(
        identity, MisbehavingServer::answering([](const WireRequest& request) {
            return request.target == "/login" ? page("log in")
                                              : httpReply("", "Location: /login\r\n", "302 Found");
        }));
    makeView(peer.url());
    open(peer.url("/"));
    EXPECT_THAT(recorder->finished, ElementsAre(peer.origin() + "/login"));
}

TEST_F(Navigation, ErrorStatusIsAFinishedPage) {
    const auto peer = site({});
    makeView(peer->url());
    open(peer->url("/missing"));
    EXPECT_EQ(view->url()->path(), "/missing");
}

TEST_F(Navigation, ServerAndPageAreToldTheEngineAndThenTheProgram) {
    const auto peer = site({{"/", "<iframe src='/frame'></iframe>"}, {"/frame", "inner"}});
    makeView(peer->url());
    open(peer->url("/"));
    const std::string agent = evaluate("navigator.userAgent");
    EXPECT_THAT(agent, testing::MatchesRegex("Mozilla/5\\.0 .*AppleWebKit/.*Safari/[0-9.]+ "
                                             "Kelo/[0-9][^ ]*"));
    ASSERT_FALSE(peer->requests().empty());
    for (const WireRequest& request : peer->requests())
        EXPECT_EQ(request.header("user-agent"), agent) << request.target;
}

TEST_F(Navigation, RefusedConnectionShowsAnErrorPageAndDoesNotFinish) {
    const Url nobody = site({})->url("/login");
    makeView(nobody);
    load(nobody);
    ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    EXPECT_THAT(pageText(), HasSubstr("Could not connect to localhost: Connection refused."));
    EXPECT_THAT(pageText(), HasSubstr("Try again"));
    EXPECT_THAT(recorder->finished, IsEmpty());
}

TEST_F(Navigation, UnknownHostShowsAnErrorPage) {
    const auto nowhere = *Url::parse("https://no-such-host.invalid/");
    makeView(nowhere);
    load(nowhere);
    ASSERT_TRUE(waitForTitle(webkit::unreachableHeading(nowhere, webkit::isOnline())));
    EXPECT_THAT(pageText(), HasSubstr("Could not find no-such-host.invalid."));
    EXPECT_THAT(recorder->finished, IsEmpty());
}

TEST_F(Navigation, TryAgainLoadsThePageOnceTheServerIsThere) {
    std::atomic<bool> up = false;
    const MisbehavingServer peer(identity, [&up](ServerConnection& connection) {
        while (connection.read()) {
            if (!up)
                return connection.breakOff();
            connection.write(page("back again"));
        }
    });
    makeView(peer.url());
    load(peer.url("/"));
    ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    up = true;
    evaluate("document.querySelector('a').click()");
    ASSERT_TRUE(waitForFinished(1));
    EXPECT_EQ(pageText(), "back again");
    EXPECT_THAT(recorder->finished, ElementsAre(peer.origin() + "/"));
}

TEST_F(Navigation, FailureAfterAPageLeavesTheDelegateAlone) {
    const auto peer = site({{"/", "hello"}});
    makeView(peer->url());
    open(peer->url("/"));
    const auto nowhere = *Url::parse("https://no-such-host.invalid/");
    load(nowhere);
    ASSERT_TRUE(waitForTitle(webkit::unreachableHeading(nowhere, webkit::isOnline())));
    EXPECT_THAT(recorder->finished, ElementsAre(peer->origin() + "/"));
    open(peer->url("/"));
    EXPECT_EQ(recorder->finished.size(), 2u);
}

TEST_F(Navigation, LoadThatIsOvertakenDoesNotFinish) {
    const MisbehavingServer peer(identity, [](ServerConnection& connection) {
        while (const auto request = connection.read()) {
            if (request->target == "/slow")
                return connection.waitForPeer();
            connection.write(page("quick"));
        }
    });
    makeView(peer.url());
    load(peer.url("/slow"));
    ASSERT_TRUE(loop.runUntil([&] { return !peer.requests().empty(); }));
    open(peer.url("/quick"));
    EXPECT_EQ(pageText(), "quick");
    EXPECT_THAT(recorder->finished, ElementsAre(peer.origin() + "/quick"));
}

TEST_F(Navigation, CrashOfTheWebProcessShowsAnErrorPage) {
    const auto peer = site({{"/", "hello"}});
    makeView(peer->url());
    open(peer->url("/"));
    ASSERT_GT(killDescendants("WebKitWebProces"), 0);
    ASSERT_TRUE(waitForTitle("This page stopped working"));
    EXPECT_EQ(recorder->finished.size(), 1u);
    evaluate("document.querySelector('a').click()");
    ASSERT_TRUE(waitForFinished(2));
    EXPECT_EQ(pageText(), "hello");
    EXPECT_EQ(recorder->finished.back(), peer->origin() + "/");
}

TEST_F(Navigation, CrashOfTheNetworkProcessHealsWithTheNextLoad) {
    const auto peer = site({{"/", "hello"}, {"/next", "next"}});
    makeView(peer->url());
    open(peer->url("/"));
    ASSERT_GT(killDescendants("WebKitNetworkPr"), 0);
    open(peer->url("/next"));
    EXPECT_EQ(pageText(), "next");
}

TEST_F(Navigation, AFormThatIsLostLeadsBackToItsPageAndIsNeverSentAsAPlainRequest) {
    const MisbehavingServer peer(identity, [](ServerConnection& connection) {
        while (const auto request = connection.read()) {
            if (request->method == "POST")
                return; // the connection breaks off
            connection.write(page("<form method=post action=/sent><button>Send</button></form>"));
        }
    });
    makeView(peer.url());
    open(peer.url("/form"));
    evaluate("document.querySelector('button').click()");
    ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    evaluate("document.querySelector('a').click()");
    ASSERT_TRUE(waitForFinished(2));
    EXPECT_EQ(recorder->finished.back(), peer.origin() + "/form");
    // With the process go the certificates that were allowed.
    ASSERT_GT(killDescendants("WebKitNetworkPr"), 0);
    evaluate("document.querySelector('button').click()");
    ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    evaluate("document.querySelector('a').click()");
    ASSERT_TRUE(waitForFinished(3));
    EXPECT_EQ(recorder->finished.back(), peer.origin() + "/form");
    for (const auto& request : peer.requests())
        EXPECT_EQ(request.target == "/sent", request.method == "POST") << request.target;
}

/// What a service with forms was asked for.
std::vector<std::string> sentForms(const MisbehavingServer& server) {
    std::vector<std::string> targets;
    for (const auto& request : server.requests())
        if (request.method == "POST")
            targets.push_back(request.target);
    return targets;
}

TEST_F(Navigation, AFormIsNotSentAgainOnTheWayBack) {
    const auto peer = site({{"/form", "<form method=post action=/sent></form>"},
                            {"/sent", "sent"},
                            {"/after", "after"}});
    makeView(peer->url());
    open(peer->url("/form"));
    evaluate("document.forms[0].submit()");
    ASSERT_TRUE(waitForFinished(2));
    open(peer->url("/after"));
    webkit_web_view_go_back(native());
    ASSERT_TRUE(waitForFinished(4));
    EXPECT_EQ(view->url()->path(), "/sent");
    EXPECT_EQ(sentForms(*peer), std::vector<std::string>{"/sent"});
}

TEST_F(Navigation, LoadAfterACrashIsFresh) {
    const auto peer = site({{"/", "hello"}, {"/next", "next"}});
    makeView(peer->url());
    open(peer->url("/"));
    evaluate("window.kept = 'yes'");
    ASSERT_GT(killDescendants("WebKitWebProces"), 0);
    ASSERT_TRUE(waitForTitle("This page stopped working"));
    open(peer->url("/"));
    EXPECT_EQ(pageText(), "hello");
    EXPECT_EQ(evaluate("typeof kept"), "undefined");
}

TEST_F(Navigation, LoadBeforeACrashIsNoticedShowsItsPageAndNoErrorPage) {
    const auto peer = site({{"/", "hello"}, {"/next", "next"}});
    makeView(peer->url());
    open(peer->url("/"));
    ASSERT_GT(killDescendants("WebKitWebProces"), 0);
    open(peer->url("/next"));
    EXPECT_EQ(pageText(), "next");
    EXPECT_THAT(recorder->finished, ElementsAre(peer->origin() + "/", peer->origin() + "/next"));
}

TEST_F(Navigation, LoadReplacesAPageThatHangs) {
    const auto peer = site({{"/", "<title>hangs</title>"}, {"/next", "next"}});
    makeView(peer->url());
    open(peer->url("/"));
    webkit_web_view_evaluate_javascript(native(), "while (true) {}", -1, nullptr, nullptr, nullptr,
                                        nullptr, nullptr);
    open(peer->url("/next"));
    EXPECT_EQ(pageText(), "next");
}

TEST_F(Navigation, LoadReplacesAPageThatIsKnownToHang) {
    const auto peer = site({{"/", "<title>hangs</title>"}, {"/next", "next"}});
    makeView(peer->url());
    open(peer->url("/"));
    webkit_web_view_evaluate_javascript(native(), "while (true) {}", -1, nullptr, nullptr, nullptr,
                                        nullptr, nullptr);
    webkit_web_view_reload(native());
    ASSERT_TRUE(
        loop.runUntil([&] { return !webkit_web_view_get_is_web_process_responsive(native()); }));
    open(peer->url("/next"));
    EXPECT_EQ(pageText(), "next");
}

TEST_F(Navigation, DelegateThatHasGoneIsNotCalled) {
    const auto peer = site({{"/", "<title>Home</title>"}});
    makeView(peer->url());
    recorder.reset();
    load(peer->url("/"));
    EXPECT_TRUE(waitForTitle("Home"));
}

TEST_F(Navigation, ViewSurvivesItsWindows) {
    const auto peer = site({{"/", "<script>window.kept = 'yes'</script>"}});
    makeView(peer->url());
    GtkWidget* const widget = GTK_WIDGET(native());
    for (int round = 0; round < 3; ++round) {
        GtkWidget* const window = gtk_window_new();
        gtk_window_set_child(GTK_WINDOW(window), widget);
        gtk_window_present(GTK_WINDOW(window));
        ASSERT_TRUE(loop.runUntil([&] { return gtk_widget_get_mapped(widget) == TRUE; }));
        if (round == 0)
            open(peer->url("/"));
        EXPECT_EQ(evaluate("window.kept"), "yes");
        gtk_window_destroy(GTK_WINDOW(window));
        ASSERT_TRUE(loop.runUntil([&] { return gtk_widget_get_parent(widget) == nullptr; }));
        EXPECT_EQ(evaluate("window.kept"), "yes");
    }
    EXPECT_EQ(recorder->finished.size(), 1u);
}

TEST_F(Navigation, FramesOfTheViewAskForTheirSize) {
    const auto anywhere = *Url::parse("https://localhost");
    webkit::WebKitEmbeddedView sized(sessionFor(anywhere), {0, 0, 640, 620}, {});
    int width = 0;
    int height = 0;
    gtk_widget_get_size_request(sized.widget(), &width, &height);
    EXPECT_EQ(width, 640);
    EXPECT_EQ(height, 620);
}

} // namespace kelo::test
