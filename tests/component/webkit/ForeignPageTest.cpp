#include "component/webkit/PlainListener.h"
#include "component/webkit/WindowFixture.h"

#include "linux/webkit/navigation/ShownPage.h"
#include "testing/screen/Keyboard.h"
#include "testing/screen/Pointer.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

namespace {

std::string redirect(const std::string& target) {
    return httpReply("", "Location: " + target + "\r\n", "302 Found");
}

} // namespace

/// A service, another site, and a view that knows which is which.
class ForeignPage : public WindowFixture {
protected:
    void SetUp() override {
        other = std::make_unique<MisbehavingServer>(
            identity, MisbehavingServer::answering([this](const WireRequest& request) {
                return request.target == "/back" ? redirect(service->origin() + "/done")
                                                 : page(otherPage());
            }));
        service = std::make_unique<MisbehavingServer>(
            identity, MisbehavingServer::answering([this](const WireRequest& request) {
                if (request.target == "/sign-in")
                    return redirect(other->origin() + "/sign-in");
                if (request.target == "/plain")
                    return redirect(plain.address());
                return page(request.target == "/" ? html : "<title>" + request.target + "</title>");
            }));
        makeView(service->url());
    }
    void TearDown() override { endSession(); }

    std::string otherPage() const {
        return "<title>other</title><a href='/more'>more</a>"
               "<script>onmessage = () => document.querySelector('a').click()</script><form "
               "method=post action='" +
               service->origin() + "/done'></form>";
    }
    window::HostedPage& hosted() { return dynamic_cast<window::HostedPage&>(*view); }
    void show(const std::string& shown) {
        html = "<title>home</title>" + shown;
        open(service->url("/"));
    }
    void clickLink() { evaluate("document.querySelector('a').click(); 1"); }
    bool waitForBrowser() {
        return loop.runUntil([this] { return !openedOutside.empty(); });
    }
    void goToOther() {
        show("");
        evaluate("location = '/sign-in'; 1");
        ASSERT_TRUE(waitForTitle("other"));
    }

    std::string html;
    PlainListener plain;
    std::unique_ptr<MisbehavingServer> other;
    std::unique_ptr<MisbehavingServer> service;
};

TEST_F(ForeignPage, LinkToItOpensInTheBrowser) {
    show("<a href='" + other->origin() + "/x'>x</a>");
    clickLink();
    ASSERT_TRUE(waitForBrowser());
    EXPECT_THAT(openedOutside, ElementsAre(other->origin() + "/x"));
    EXPECT_EQ(view->url()->absoluteString(), service->origin() + "/");
    EXPECT_THAT(other->requests(), IsEmpty());
}

TEST_F(ForeignPage, LinkToItOpensInTheBrowserWithEveryButtonAndModifier) {
    showInWindow();
    show("<style>a {position: fixed; inset: 0}</style><a href='" + other->origin() + "/x'>x</a>");
    const screen::XConnection connection;
    const screen::Keyboard keyboard(connection);
    const screen::Pointer pointer(connection);
    pointer.moveTo({200, 150});
    ASSERT_TRUE(waitForScript("document.querySelector('a').matches(':hover')", "true"));
    for (const char* modifier : {"", "Control_L", "Shift_L", "Alt_L"})
        for (const unsigned button : {1u, 2u}) {
            openedOutside.clear();
            if (*modifier)
                keyboard.down(modifier);
            pointer.click({200, 150}, button);
            EXPECT_TRUE(waitForBrowser()) << modifier << button;
            if (*modifier)
                keyboard.up(modifier);
            EXPECT_THAT(openedOutside, ElementsAre(other->origin() + "/x"));
        }
    EXPECT_THAT(other->requests(), IsEmpty());
}

TEST_F(ForeignPage, LinkThatAScriptFollowsUnaskedOpensNoBrowser) {
    html = "<a href='" + other->origin() +
           "/'>x</a><script>document.querySelector('a').click()"
           "</script>";
    load(service->url("/"));
    ASSERT_TRUE(waitForTitle("other"));
    EXPECT_NE(hosted().foreignHost(), std::nullopt);
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(ForeignPage, LinkOfAFrameStaysInTheFrame) {
    show("<iframe src='" + other->origin() + "/'></iframe>");
    // A click or a key goes to the frame with the focus.
    evaluate("document.querySelector('iframe').focus(); frames[0].postMessage('click', '*'); 1");
    EXPECT_TRUE(loop.runUntil([&] { return other->requests().back().target == "/more"; }));
    EXPECT_THAT(openedOutside, IsEmpty());
    EXPECT_EQ(view->url()->absoluteString(), service->origin() + "/");
    EXPECT_EQ(hosted().foreignHost(), std::nullopt);
}

TEST_F(ForeignPage, PageCannotPassItsLinkOffAsThatOfAFrame) {
    show("<a href='" + other->origin() +
         "/x'>x</a><script>Object.defineProperty(Document.prototype"
         ", 'activeElement', {get: () => document.createElement('iframe')})</script>");
    clickLink();
    EXPECT_TRUE(waitForBrowser());
    EXPECT_THAT(other->requests(), IsEmpty());
}

TEST_F(ForeignPage, ComesByRedirectAndByScriptAndGoesByAForm) {
    goToOther();
    EXPECT_THAT(hosted().foreignHost(), Optional("localhost:" + std::to_string(other->port())));
    evaluate("document.forms[0].submit(); 1");
    ASSERT_TRUE(waitForTitle("/done"));
    EXPECT_EQ(service->requests().back().method, "POST");
    EXPECT_EQ(hosted().foreignHost(), std::nullopt);
    evaluate("location = '" + other->origin() + "/'; 1");
    ASSERT_TRUE(waitForTitle("other"));
    EXPECT_NE(hosted().foreignHost(), std::nullopt);
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(ForeignPage, ComesByAFormOfTheService) {
    show("<form method=post action='" + other->origin() + "/'></form>");
    evaluate("document.forms[0].submit(); 1");
    ASSERT_TRUE(waitForTitle("other"));
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(ForeignPage, ComesByALinkOfTheServiceThatRedirects) {
    show("<a href='/sign-in'>x</a>");
    clickLink();
    ASSERT_TRUE(waitForTitle("other"));
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(ForeignPage, LinksWithinItAndBackToTheServiceStayInTheView) {
    goToOther();
    clickLink();
    ASSERT_TRUE(loop.runUntil([&] { return other->requests().back().target == "/more"; }));
    ASSERT_TRUE(waitForTitle("other"));
    evaluate("document.querySelector('a').href = '/back'; 1");
    clickLink();
    ASSERT_TRUE(waitForTitle("/done"));
    evaluate("history.go(-1); 1");
    ASSERT_TRUE(waitForTitle("other"));
    EXPECT_NE(hosted().foreignHost(), std::nullopt);
    evaluate("document.querySelector('a').href = '" + service->origin() + "/linked'; 1");
    clickLink();
    ASSERT_TRUE(waitForTitle("/linked"));
    EXPECT_EQ(hosted().foreignHost(), std::nullopt);
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(ForeignPage, IsReportedWhenItIsShownAndNotBefore) {
    show("");
    std::vector<std::optional<std::string>> reported;
    const auto observer = std::make_shared<const std::function<void()>>(
        [&] { reported.push_back(hosted().foreignHost()); });
    hosted().setPageObserver(observer);
    evaluate("location = '/sign-in'; 1");
    ASSERT_TRUE(waitForTitle("other"));
    EXPECT_THAT(reported, ElementsAre(Optional("localhost:" + std::to_string(other->port()))));
}

TEST_F(ForeignPage, ThatMakesADocumentOfItsOwnIsStillForeign) {
    goToOther();
    evaluate("location = URL.createObjectURL(new Blob(['<title>made</title>'],"
             "{type: 'text/html'})); 1");
    ASSERT_TRUE(waitForTitle("made"));
    EXPECT_THAT(hosted().foreignHost(), Optional("localhost:" + std::to_string(other->port())));
}

TEST_F(ForeignPage, IsLeftForTheServicesFirstPage) {
    goToOther();
    hosted().returnToService();
    ASSERT_TRUE(waitForTitle("home"));
    EXPECT_EQ(hosted().foreignHost(), std::nullopt);
}

TEST_F(ForeignPage, OpensInTheBrowserAndStays) {
    goToOther();
    hosted().openInBrowser();
    EXPECT_THAT(openedOutside, ElementsAre(other->origin() + "/sign-in"));
    EXPECT_NE(hosted().foreignHost(), std::nullopt);
}

TEST_F(ForeignPage, ThatDoesNotLoadIsNamedInItsErrorPage) {
    show("");
    const int port = other->port();
    other.reset();
    evaluate("location = 'https://localhost:" + std::to_string(port) + "/'; 1");
    ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    EXPECT_THAT(hosted().foreignHost(), Optional("localhost:" + std::to_string(port)));
}

TEST_F(ForeignPage, WithoutEncryptionIsNotLoadedByARedirect) {
    show("");
    evaluate("location = '/plain'; 1");
    ASSERT_TRUE(waitForTitle("This page is not secure"));
    EXPECT_THAT(hosted().foreignHost(), Optional(plain.host()));
    clickLink(); // "Try again"
    open(service->url("/next"));
    EXPECT_FALSE(plain.wasAsked());
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(ForeignPage, WithoutEncryptionIsNotLoadedByAScriptAFormOrAFrame) {
    show("<iframe></iframe><form method=post action='" + plain.address() + "'></form>");
    evaluate("document.querySelector('iframe').src = '" + plain.address() + "'; 1");
    evaluate("location = '" + plain.address() + "'; 1");
    evaluate("document.forms[0].submit(); 1");
    open(service->url("/next"));
    EXPECT_FALSE(plain.wasAsked());
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(ForeignPage, WithoutEncryptionOpensInTheBrowserByALink) {
    show("<a href='" + plain.address() + "'>x</a>");
    clickLink();
    ASSERT_TRUE(waitForBrowser());
    EXPECT_THAT(openedOutside, ElementsAre(plain.address()));
    EXPECT_FALSE(plain.wasAsked());
}

TEST_F(ForeignPage, WithoutEncryptionIsNotLoadedInAViewWhoseLinksBelongInTheBrowser) {
    platform::WebViewConfiguration configuration;
    configuration.linksOpenInBrowser = true;
    makeView(service->url(), configuration);
    show("");
    evaluate("location = '" + plain.address() + "'; 1");
    open(service->url("/next"));
    EXPECT_FALSE(plain.wasAsked());
}

/// What address is whose.
class ShownPageTest : public testing::Test {
protected:
    webkit::ShownPage& show(const char* address) {
        shown.committed(address);
        return shown;
    }

    webkit::ShownPage shown{*Url::parse("https://kelo.example")};
};

TEST_F(ShownPageTest, OfTheServicesOriginIsTheServices) {
    for (const char* address : {"https://kelo.example/", "https://KELO.example:443/login",
                                "blob:https://kelo.example/1-2"}) {
        EXPECT_TRUE(show(address).isServices()) << address;
        EXPECT_FALSE(shown.isForeign()) << address;
    }
}

TEST_F(ShownPageTest, OfAnyOtherOriginIsForeign) {
    for (const char* address :
         {"https://kelo.example.com/", "https://kelo.example:444/", "http://kelo.example/",
          "https://kelo.example@evil.example/", "blob:https://evil.example/1",
          "data:text/html,https://kelo.example/"}) {
        EXPECT_TRUE(show(address).isForeign()) << address;
        EXPECT_FALSE(shown.isServices()) << address;
    }
}

TEST_F(ShownPageTest, NothingIsNobodys) {
    for (const char* address : {static_cast<const char*>(nullptr), "", "about:blank"}) {
        EXPECT_FALSE(show(address).isForeign());
        EXPECT_FALSE(shown.isServices());
        EXPECT_EQ(shown.addressForBrowser(), std::nullopt);
    }
}

TEST_F(ShownPageTest, HostIsNamedWithAnUnusualPortAlone) {
    EXPECT_EQ(show("https://id.example/a?b").host(), "id.example");
    EXPECT_EQ(show("https://id.example:8444/").host(), "id.example:8444");
    EXPECT_EQ(show("http://id.example/").host(), "id.example");
    EXPECT_EQ(show("http://id.example:443/").host(), "id.example:443");
    EXPECT_EQ(show("https://xn--80ak6aa92e.com/").host(), "xn--80ak6aa92e.com");
    EXPECT_EQ(show("https://kelo.example@evil.example/").host(), "evil.example");
    EXPECT_EQ(show("data:text/html,x").host(), "");
}

TEST_F(ShownPageTest, BrowserGetsAnAddressThatItCanOpen) {
    EXPECT_THAT(show("https://id.example/a?b").addressForBrowser(),
                Optional(std::string("https://id.example/a?b")));
    EXPECT_THAT(show("blob:https://id.example:8444/1-2").addressForBrowser(),
                Optional(std::string("https://id.example:8444/")));
    EXPECT_EQ(show("data:text/html,x").addressForBrowser(), std::nullopt);
}

} // namespace kelo::test
