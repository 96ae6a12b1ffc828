// What a page asks before it is left, on the real engine and with real clicks.
#include "component/webkit/ManualTimers.h"
#include "component/webkit/WindowFixture.h"
#include "testing/screen/Pointer.h"

#include <gtest/gtest.h>

namespace kelo::test {

using window::PageQuestionKind;

class Leaving : public WindowFixture {
protected:
    void SetUp() override {
        server = site({{"/", R"(<title>form</title><script>
            clicks = 0; onclick = () => clicks++;
            tries = 0;
            onbeforeunload = (event) => { tries++; event.preventDefault(); };</script>)"},
                       {"/next", "next"},
                       {"/easy", "<title>easy</title>"}});
        makeView(server->url());
        showInWindow();
        open(server->url("/"));
    }
    /// Before that, the engine lets no page ask.
    void click() {
        const screen::XConnection display;
        screen::Pointer(display).click({200, 150});
        ASSERT_TRUE(waitForScript("clicks > 0", "true"));
    }
    const window::PageQuestion& last() const { return dialogs->asked.back().question; }
    window::HostedPage& hosted() { return dynamic_cast<window::HostedPage&>(*view); }
    /// Asks all pages, as the program does before it ends.
    void leaveAll() {
        left.reset();
        pages->leaveAll([this](bool leave) { left = leave; });
    }
    bool waitUntilDecided() {
        return loop.runUntil([this] { return left.has_value(); });
    }
    /// Loads that were begun would have changed it by then.
    bool isStillThere() { return evaluate("clicks > 0 && document.title") == "form"; }

    std::unique_ptr<MisbehavingServer> server;
    std::optional<bool> left;
};

TEST_F(Leaving, AsksNothingBeforeTheUserHasDoneSomethingInThePage) {
    load(server->url("/next"));
    ASSERT_TRUE(loop.runUntil(
        [this] { return recorder->finished.size() == 2 || !dialogs->asked.empty(); }));
    EXPECT_TRUE(dialogs->asked.empty());
}

TEST_F(Leaving, AsksNothingBecauseAFormerPageWasUsed) {
    click();
    load(server->url("/"));
    ASSERT_TRUE(waitForQuestion());
    dialogs->answer({true});
    ASSERT_TRUE(waitForFinished(2));
    load(server->url("/next"));
    ASSERT_TRUE(loop.runUntil(
        [this] { return recorder->finished.size() == 3 || dialogs->asked.size() > 1; }));
    EXPECT_EQ(dialogs->asked.size(), 1U);
}

TEST_F(Leaving, ByAnotherLoadIsUpToTheUser) {
    click();
    load(server->url("/next"));
    ASSERT_TRUE(waitForQuestion());
    EXPECT_EQ(last().kind, PageQuestionKind::beforeUnload);
    EXPECT_EQ(last().host, "localhost:" + std::to_string(server->port()));
    EXPECT_FALSE(last().mayBeSilenced);
    dialogs->answer({false});
    EXPECT_TRUE(isStillThere());
    load(server->url("/next"));
    ASSERT_TRUE(waitForQuestion(2));
    EXPECT_FALSE(last().mayBeSilenced);
    dialogs->answer({true});
    EXPECT_TRUE(waitForFinished(2));
    EXPECT_EQ(pageText(), "next");
}

TEST_F(Leaving, ByReloadBackAndTheServicesFirstPageIsUpToTheUser) {
    open(server->url("/easy"));
    open(server->url("/"));
    click();
    std::size_t questions = 0;
    for (const auto& leave : std::vector<std::function<void()>>{
             [this] { hosted().reload(); }, [this] { hosted().controls().reloadFromServer(); },
             [this] { hosted().controls().goBack(); }, [this] { hosted().returnToService(); }}) {
        leave();
        ASSERT_TRUE(waitForQuestion(++questions));
        EXPECT_EQ(last().kind, PageQuestionKind::beforeUnload);
        dialogs->answer({false});
        EXPECT_TRUE(isStillThere());
        EXPECT_EQ(evaluate("location.pathname"), "/");
        EXPECT_FALSE(hosted().controls().loadProgress());
    }
    hosted().controls().goBack();
    ASSERT_TRUE(waitForQuestion(++questions));
    dialogs->answer({true});
    EXPECT_TRUE(waitForTitle("easy"));
}

// The limit of a load that nobody asks for any more would put an error page in place of the page.
TEST_F(Leaving, ThatIsNotWantedLetsNoLoadTimeOut) {
    click();
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    load(server->url("/next"));
    ASSERT_TRUE(waitForQuestion());
    dialogs->answer({false});
    EXPECT_GT(timers.scheduled, 0);
    EXPECT_TRUE(loop.runUntil([&] { return !timers.anyPending(); }));
    EXPECT_TRUE(isStillThere());
}

TEST_F(Leaving, TakesTheUserAsLongAsItTakes) {
    click();
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    load(server->url("/next"));
    ASSERT_TRUE(waitForQuestion());
    EXPECT_FALSE(timers.anyPending());
    dialogs->answer({true});
    EXPECT_TRUE(waitForFinished(2));
    EXPECT_EQ(pageText(), "next");
}

TEST_F(Leaving, IsUpToTheUserHoweverManyDialogsWereRefused) {
    click();
    begin("alert('one')");
    ASSERT_TRUE(waitForQuestion());
    dialogs->answer({true, "", true});
    load(server->url("/next"));
    EXPECT_TRUE(waitForQuestion(2));
}

TEST_F(Leaving, StayingLetsThePageSpeakAgain) {
    click();
    load(server->url("/next"));
    ASSERT_TRUE(waitForQuestion());
    dialogs->answer({false});
    begin("alert('still here')");
    EXPECT_TRUE(waitForQuestion(2));
}

TEST_F(Leaving, OutOfSightAsksNobodyIfTheProgramLeads) {
    click();
    leaveWindow();
    open(server->url("/next"));
    EXPECT_EQ(pageText(), "next");
    EXPECT_TRUE(dialogs->asked.empty());
}

TEST_F(Leaving, OutOfSightDoesNotHappenByThePageItself) {
    click();
    leaveWindow();
    evaluate("location.href = '/next'; 1");
    ASSERT_TRUE(waitForScript("tries", "1"));
    // What is asked for later comes later.
    evaluate("fetch('/easy').then(() => { tries++; }); 1");
    EXPECT_TRUE(waitForScript("tries", "2"));
    for (const WireRequest& request : server->requests())
        EXPECT_NE(request.target, "/next");
    EXPECT_TRUE(isStillThere());
    EXPECT_TRUE(dialogs->asked.empty());
}

TEST_F(Leaving, AtTheEndOfTheProgramIsUpToTheUser) {
    click();
    for (const bool leave : {false, true}) {
        dialogs->asked.clear();
        leaveAll();
        ASSERT_TRUE(waitForQuestion());
        EXPECT_EQ(last().kind, PageQuestionKind::beforeUnload);
        EXPECT_TRUE(last().isUrgent);
        EXPECT_EQ(dialogs->asked.back().parent, GTK_WINDOW(window));
        EXPECT_FALSE(left);
        dialogs->answer({leave});
        ASSERT_TRUE(waitUntilDecided());
        EXPECT_EQ(left, leave);
        EXPECT_TRUE(isStillThere());
    }
}

TEST_F(Leaving, AtTheEndOfTheProgramIsUpToTheUserOutOfSightAsWell) {
    click();
    leaveWindow();
    leaveAll();
    ASSERT_TRUE(waitForQuestion());
    EXPECT_EQ(dialogs->asked.back().parent, nullptr);
    dialogs->answer({false});
    ASSERT_TRUE(waitUntilDecided());
    EXPECT_EQ(left, false);
}

TEST_F(Leaving, AtTheEndOfTheProgramIsFreeWithoutAnObjection) {
    leaveAll();
    ASSERT_TRUE(waitUntilDecided());
    EXPECT_EQ(left, true);
    EXPECT_TRUE(dialogs->asked.empty());
}

TEST_F(Leaving, AtTheEndOfTheProgramIsFreeForAViewWithoutAPage) {
    gtk_window_set_child(GTK_WINDOW(window), nullptr);
    makeView(server->url());
    leaveAll();
    EXPECT_EQ(left, true);
}

TEST_F(Leaving, AtTheEndOfTheProgramIsFreeForThePageOfTheVoiceWidget) {
    gtk_window_set_child(GTK_WINDOW(window), nullptr);
    platform::WebViewConfiguration configuration;
    configuration.linksOpenInBrowser = true;
    makeView(server->url(), configuration);
    showInWindow();
    open(server->url("/"));
    click();
    leaveAll();
    EXPECT_EQ(left, true);
    EXPECT_TRUE(dialogs->asked.empty());
}

TEST_F(Leaving, AtTheEndOfTheProgramGivesAPageThatHangsFourSeconds) {
    begin("while (true) {}");
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    leaveAll();
    EXPECT_FALSE(left);
    ASSERT_TRUE(timers.isPending());
    EXPECT_EQ(timers.delays.back(), std::chrono::seconds(4));
    timers.fire();
    EXPECT_EQ(left, true);
}

TEST_F(Leaving, AtTheEndOfTheProgramGivesTheUserAsLongAsItTakes) {
    click();
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    leaveAll();
    EXPECT_TRUE(timers.isPending());
    ASSERT_TRUE(waitForQuestion());
    EXPECT_FALSE(timers.isPending());
}

TEST_F(Leaving, AtTheEndOfTheProgramClosesTheDialogsOfThePage) {
    click();
    begin("while (true) alert('again')");
    ASSERT_TRUE(waitForQuestion());
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    leaveAll();
    EXPECT_FALSE(dialogs->anyOpen());
    EXPECT_EQ(dialogs->asked.size(), 1U);
    timers.fire();
    EXPECT_EQ(left, true);
}

TEST_F(Leaving, AtTheEndOfTheProgramTwiceAsksOnce) {
    click();
    leaveAll();
    ASSERT_TRUE(waitForQuestion());
    bool isAskedAgain = false;
    pages->leaveAll([&](bool) { isAskedAgain = true; });
    dialogs->answer({false});
    ASSERT_TRUE(waitUntilDecided());
    EXPECT_EQ(dialogs->asked.size(), 1U);
    EXPECT_FALSE(isAskedAgain);
}

TEST_F(Leaving, AtTheEndOfTheProgramIsFreeOnceTheProcessOfThePageHasEnded) {
    click();
    leaveAll();
    ASSERT_TRUE(waitForQuestion());
    webkit_web_view_terminate_web_process(native());
    ASSERT_TRUE(waitUntilDecided());
    EXPECT_EQ(left, true);
    EXPECT_FALSE(dialogs->anyOpen());
}

} // namespace kelo::test
