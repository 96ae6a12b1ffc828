#include "component/webkit/MainWindowFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::IsEmpty;

/// window.open(), by real clicks.
class Popup : public MainWindowFixture {
protected:
    static constexpr const char* opener = R"(<button id=open style='width: 200px; height: 60px'>
        open</button><script>
        heard = []; opened = 0;
        onmessage = (event) => heard.push(event.data);
        document.getElementById('open').onclick = () => { opened = window.open(...wanted); };
        </script>)";
    static constexpr const char* popupPage = R"(<title>inside</title><script>
        onmessage = (event) => opener.postMessage('echo ' + event.data, '*');
        opener.postMessage('hello', '*');
        </script>)";

    void SetUp() override {
        openInMainWindow({{"/", opener},
                          {"/popup", popupPage},
                          {"/unasked", "<script>setTimeout(() => {"
                                       "later = window.open('/popup', '', 'width=400');"
                                       "});</script>"}});
        gtk_window_present(GTK_WINDOW(window->gobj()));
    }
    void clickToOpen(const std::string& arguments) {
        evaluate("wanted = [" + arguments + "]; opened = 0; 1");
        pointer.click(placeOf("#open"));
        ASSERT_TRUE(waitForScript("opened === 0", "false"));
    }
    /// The window of a popup; null if there is none.
    GtkWindow* popup() const {
        GListModel* const all = gtk_window_get_toplevels();
        for (guint index = 0; index < g_list_model_get_n_items(all); ++index) {
            auto* const each = static_cast<GtkWindow*>(g_list_model_get_item(all, index));
            g_object_unref(each);
            if (each != GTK_WINDOW(window->gobj()) && gtk_widget_get_mapped(GTK_WIDGET(each)))
                return each;
        }
        return nullptr;
    }
    bool waitForPopup(bool isThere) {
        return loop.runUntil([&] { return (popup() != nullptr) == isThere; });
    }
};

TEST_F(Popup, HasAWindowOfItsOwnAndTalksWithItsOpener) {
    clickToOpen("'/popup', 'name', 'width=400,height=300'");
    ASSERT_TRUE(waitForPopup(true));
    EXPECT_TRUE(waitForScript("heard.join()", "hello"));
    evaluate("opened.postMessage('again', '*'); 1");
    EXPECT_TRUE(waitForScript("heard.join()", "hello,echo again"));
    EXPECT_EQ(gtk_window_get_title(popup()),
              server->url().host() + ":" + std::to_string(server->port()));
    EXPECT_EQ(view->url()->path(), "/");
    evaluate("opened.close(); 1");
    EXPECT_TRUE(waitForPopup(false));
    EXPECT_TRUE(waitForScript("opened.closed", "true"));
}

TEST_F(Popup, IsEndedByEscape) {
    clickToOpen("'/popup', 'name', 'width=400,height=300'");
    ASSERT_TRUE(waitForPopup(true));
    ASSERT_TRUE(waitForScript("heard.join()", "hello"));
    ASSERT_TRUE(loop.runUntil([this] { return gtk_window_is_active(popup()); }));
    press("Escape");
    EXPECT_TRUE(waitForPopup(false));
    EXPECT_TRUE(waitForScript("opened.closed", "true"));
}

TEST_F(Popup, OfAnotherSiteIsShownIfItIsMeantAsOne) {
    const auto other = site({{"/", popupPage}});
    clickToOpen("'" + other->origin() + "/', '', 'width=400,height=300'");
    ASSERT_TRUE(waitForPopup(true));
    EXPECT_TRUE(waitForScript("heard.join()", "hello"));
    EXPECT_THAT(openedOutside, IsEmpty());
}

TEST_F(Popup, OfAnotherSiteWithoutFeaturesGoesToTheBrowser) {
    clickToOpen("'https://example.org/x'");
    ASSERT_TRUE(loop.runUntil([this] { return !openedOutside.empty(); }));
    EXPECT_THAT(openedOutside, ElementsAre("https://example.org/x"));
    settle();
    EXPECT_FALSE(popup());
}

TEST_F(Popup, OpensOnlyForTheUser) {
    open(server->url("/unasked"));
    EXPECT_TRUE(waitForScript("typeof later", "object"));
    EXPECT_EQ(evaluate("later === null"), "true");
    settle();
    EXPECT_FALSE(popup());
}

TEST_F(Popup, IsNotOpenedWithoutEncryption) {
    clickToOpen("'http://example.org/', '', 'width=400,height=300'");
    EXPECT_EQ(evaluate("opened === null"), "true");
    EXPECT_FALSE(popup());
    EXPECT_THAT(openedOutside, ElementsAre("http://example.org/"));
}

TEST_F(Popup, ShowsItsDialogsAboveItsWindow) {
    clickToOpen("'/popup', 'name', 'width=400,height=300'");
    ASSERT_TRUE(waitForPopup(true));
    ASSERT_TRUE(waitForScript("heard.join()", "hello"));
    begin("opened.setTimeout(() => opened.opener.postMessage(opened.confirm('sure?'), '*'))");
    ASSERT_TRUE(waitForQuestion());
    EXPECT_EQ(dialogs->asked.back().parent, popup());
    EXPECT_EQ(dialogs->asked.back().question.host,
              server->url().host() + ":" + std::to_string(server->port()));
    dialogs->answer({true});
    EXPECT_TRUE(waitForScript("heard.join()", "hello,true"));
}

TEST_F(Popup, IsNotClosedAgainstTheUsersWillIfItsPageObjects) {
    clickToOpen("'/popup', 'name', 'width=400,height=300'");
    ASSERT_TRUE(waitForPopup(true));
    ASSERT_TRUE(waitForScript("heard.join()", "hello"));
    evaluate("opened.onbeforeunload = (event) => event.preventDefault();"
             "opened.onclick = () => heard.push('clicked'); 1");
    ASSERT_TRUE(loop.runUntil([this] { return gtk_window_is_active(popup()); }));
    pointer.click(onScreen(gtk_window_get_child(popup()), 100, 100));
    ASSERT_TRUE(waitForScript("heard.join()", "hello,clicked"));
    press("Escape");
    ASSERT_TRUE(waitForQuestion());
    EXPECT_EQ(dialogs->asked.back().question.kind, window::PageQuestionKind::beforeUnload);
    dialogs->answer({false});
    settle();
    ASSERT_TRUE(popup());
    gtk_window_close(popup());
    ASSERT_TRUE(waitForQuestion(2));
    dialogs->answer({true});
    EXPECT_TRUE(waitForPopup(false));
}

// A script that runs on our behalf counts as the user.
TEST_F(Popup, LeadsNowhereWithoutEncryption) {
    clickToOpen("'/popup', '', 'width=400,height=300'");
    ASSERT_TRUE(waitForPopup(true));
    ASSERT_TRUE(waitForScript("heard.join()", "hello"));
    webkit_web_view_evaluate_javascript(
        WEBKIT_WEB_VIEW(gtk_window_get_child(popup())),
        "const link = document.createElement('a'); link.href = 'http://example.org/';"
        "document.body.append(link); link.click()",
        -1, nullptr, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(loop.runUntil([this] { return !openedOutside.empty(); }));
    EXPECT_THAT(openedOutside, ElementsAre("http://example.org/"));
    evaluate("opened.postMessage('still here', '*'); 1");
    EXPECT_TRUE(waitForScript("heard.join()", "hello,echo still here"));
}

} // namespace kelo::test
