#include "component/webkit/WebKitFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the links of a page lead to.
class Link : public WebKitFixture {
protected:
    void show(const std::string& html, std::map<std::string, std::string> more = {}) {
        more["/"] = html;
        peer = site(std::move(more));
        makeView(peer->url());
        open(peer->url("/"));
    }
    /// A click by script counts as the user's while the engine runs a script on our behalf.
    void click() { evaluate("document.querySelector('a').click(); 1"); }

    std::unique_ptr<MisbehavingServer> peer;
};

TEST_F(Link, OfTheServiceThatWantsANewWindowOpensInTheView) {
    show("<a target=_blank href='/next'>next</a>", {{"/next", "next page"}});
    click();
    ASSERT_TRUE(waitForFinished(2));
    EXPECT_EQ(view->url()->path(), "/next");
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(Link, OfAnotherSiteThatWantsANewWindowOpensInTheBrowser) {
    show("<a target=_blank href='https://example.org/x?y=1'>out</a>");
    click();
    ASSERT_TRUE(loop.runUntil([&] { return !openedOutside.empty(); }));
    EXPECT_THAT(openedOutside, ElementsAre("https://example.org/x?y=1"));
    EXPECT_EQ(recorder->finished.size(), 1u);
    EXPECT_EQ(view->url()->path(), "/");
}

TEST_F(Link, PlainLinkStaysInTheViewUnlessLinksBelongInTheBrowser) {
    for (const bool inBrowser : {false, true}) {
        peer = site({{"/", "<a href='/next'>next</a>"}, {"/next", "next page"}});
        platform::WebViewConfiguration configuration;
        configuration.linksOpenInBrowser = inBrowser;
        endSession();
        makeView(peer->url(), configuration);
        open(peer->url("/"));
        const auto pagesBefore = recorder->finished.size();
        click();
        if (inBrowser) {
            ASSERT_TRUE(loop.runUntil([&] { return !openedOutside.empty(); }));
            EXPECT_THAT(openedOutside, ElementsAre(peer->origin() + "/next"));
            EXPECT_EQ(view->url()->path(), "/");
        } else {
            ASSERT_TRUE(waitForFinished(pagesBefore + 1));
            EXPECT_EQ(view->url()->path(), "/next");
            EXPECT_THAT(openedOutside, IsEmpty());
        }
    }
}

TEST_F(Link, NeitherAPlaceInThePageNorAScriptsNavigationBelongsInTheBrowser) {
    peer = site({{"/", "<a href='#below'>below</a>"}, {"/next", "next page"}});
    platform::WebViewConfiguration configuration;
    configuration.linksOpenInBrowser = true;
    makeView(peer->url(), configuration);
    open(peer->url("/"));
    click();
    ASSERT_TRUE(waitForScript("location.hash", "#below"));
    evaluate("location.href = '/next'; 1");
    ASSERT_TRUE(waitForFinished(2));
    EXPECT_EQ(view->url()->path(), "/next");
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(Link, MailAddressOpensInTheMailProgram) {
    show("<a href='mailto:help@example.org'>mail</a>");
    click();
    ASSERT_TRUE(loop.runUntil([&] { return !openedOutside.empty(); }));
    EXPECT_THAT(openedOutside, ElementsAre("mailto:help@example.org"));
}

TEST_F(Link, AddressOfAnUnknownKindDoesNothing) {
    show("<a href='strange:thing'>strange</a>", {{"/next", "next"}});
    click();
    open(peer->url("/next"));
    EXPECT_THAT(openedOutside, IsEmpty());
    EXPECT_THAT(recorder->finished, ElementsAre(peer->origin() + "/", peer->origin() + "/next"));
}

TEST_F(Link, ScriptAloneOpensNothingOutside) {
    show("<script>window.open('https://example.org/'); location = 'mailto:a@example.org'</script>",
         {{"/next", "next"}});
    open(peer->url("/next"));
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(Link, MicrophoneCameraAndLocationAreRefused) {
    show("<p></p>");
    // The engine puts such questions off while nobody can see the page.
    GtkWidget* const window = gtk_window_new();
    gtk_window_set_child(GTK_WINDOW(window), GTK_WIDGET(native()));
    gtk_window_present(GTK_WINDOW(window));
    evaluate("navigator.geolocation.getCurrentPosition(() => window.place = 'yes',"
             "error => window.place = 'refused ' + error.code); 1");
    EXPECT_TRUE(waitForScript("window.place", "refused 1"));
    evaluate("window.sound = navigator.mediaDevices ? 'asked' : 'none';"
             "navigator.mediaDevices && navigator.mediaDevices.getUserMedia({audio: true})"
             ".then(() => window.sound = 'yes', error => window.sound = 'no'); 1");
    EXPECT_TRUE(loop.runUntil([&] {
        const std::string sound = evaluate("window.sound");
        return sound == "no" || sound == "none";
    }));
    gtk_window_destroy(GTK_WINDOW(window));
}

} // namespace kelo::test
