// What pages say and ask in dialogs, on the real engine.
#include "component/webkit/WindowFixture.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/dialogs/ScriptDialogs.h"

#include <gtest/gtest.h>

namespace kelo::test {

using window::PageQuestionKind;

class ScriptDialog : public WindowFixture {
protected:
    void SetUp() override { openPages({{"/", "<title>Home</title>"}, {"/next", "next"}}); }

    void openPages(std::map<std::string, std::string> given) {
        view.reset();
        session.reset();
        server = site(std::move(given));
        makeView(server->url());
        showInWindow();
        open(server->url("/"));
        ASSERT_TRUE(waitForTitle("Home"));
    }
    std::string host() const { return server->url().host() + ":" + std::to_string(server->port()); }
    void ask(const std::string& script) {
        const auto before = dialogs->asked.size();
        begin(script);
        ASSERT_TRUE(waitForQuestion(before + 1));
    }
    const window::PageQuestion& last() const { return dialogs->asked.back().question; }

    std::unique_ptr<MisbehavingServer> server;
};

TEST_F(ScriptDialog, AlertNamesTheHostAndThePageWaits) {
    ask("alert('first\\nsecond'); document.title = 'after'");
    EXPECT_EQ(last().kind, PageQuestionKind::alert);
    EXPECT_EQ(last().host, host());
    EXPECT_EQ(last().message, "first\nsecond");
    EXPECT_FALSE(last().isUrgent);
    EXPECT_EQ(dialogs->asked.back().parent, GTK_WINDOW(window));
    EXPECT_STREQ(webkit_web_view_get_title(native()), "Home");
    dialogs->answer({true});
    EXPECT_TRUE(waitForTitle("after"));
    EXPECT_FALSE(dialogs->anyOpen());
}

TEST_F(ScriptDialog, ConfirmIsAnsweredWithWhatTheUserChose) {
    for (const bool confirmed : {true, false}) {
        ask("document.title = confirm('sure?')");
        EXPECT_EQ(last().kind, PageQuestionKind::confirm);
        EXPECT_EQ(last().message, "sure?");
        dialogs->answer({confirmed});
        EXPECT_TRUE(waitForTitle(confirmed ? "true" : "false"));
    }
}

TEST_F(ScriptDialog, PromptIsAnsweredWithTheTextOrNull) {
    ask("document.title = 'got ' + prompt('name?', 'Ann')");
    EXPECT_EQ(last().kind, PageQuestionKind::prompt);
    EXPECT_EQ(last().message, "name?");
    EXPECT_EQ(last().defaultText, "Ann");
    dialogs->answer({true, "Béa"});
    EXPECT_TRUE(waitForTitle("got Béa"));
    ask("document.title = 'got ' + prompt('name?', 'Ann')");
    dialogs->answer({true, ""});
    EXPECT_TRUE(waitForTitle("got"));
    ask("document.title = 'got ' + prompt('name?', 'Ann')");
    dialogs->answer({false, "Ann"});
    EXPECT_TRUE(waitForTitle("got null"));
}

TEST_F(ScriptDialog, OfAPageOutOfSightIsCancelledAtOnce) {
    leaveWindow();
    EXPECT_EQ(evaluate("[alert('a'), confirm('b'), prompt('c', 'd')].join()"), ",false,");
    EXPECT_TRUE(dialogs->asked.empty());
}

TEST_F(ScriptDialog, IsCancelledWhenThePageLeavesTheScreen) {
    ask("document.title = confirm('sure?')");
    leaveWindow();
    EXPECT_TRUE(waitForTitle("false"));
    EXPECT_FALSE(dialogs->anyOpen());
}

TEST_F(ScriptDialog, IsClosedWithTheProcessOfItsPage) {
    ask("confirm('sure?')");
    webkit_web_view_terminate_web_process(native());
    EXPECT_TRUE(loop.runUntil([this] { return !dialogs->anyOpen(); }));
    open(server->url("/next"));
    EXPECT_EQ(pageText(), "next");
}

TEST_F(ScriptDialog, IsClosedWithItsView) {
    ask("confirm('sure?')");
    gtk_window_set_child(GTK_WINDOW(window), nullptr);
    view.reset();
    EXPECT_FALSE(dialogs->anyOpen());
}

TEST_F(ScriptDialog, DoesNotKeepAnotherPageAwayNorEndAProcess) {
    int endedProcesses = 0;
    const gobject::SignalConnection ends = gobject::connectSignal(
        native(), "web-process-terminated",
        +[](WebKitWebView*, WebKitWebProcessTerminationReason, int* count) { ++*count; },
        &endedProcesses);
    for (const char* question : {"alert('here')", "confirm('sure')", "prompt('name')"}) {
        ask(question);
        open(server->url("/next"));
        EXPECT_EQ(pageText(), "next") << question;
        EXPECT_FALSE(dialogs->anyOpen()) << question;
    }
    EXPECT_EQ(endedProcesses, 0);
}

TEST_F(ScriptDialog, InAnEndlessRowDoesNotKeepAnotherPageAway) {
    ask("while (true) alert('again')");
    open(server->url("/next"));
    EXPECT_EQ(pageText(), "next");
    EXPECT_EQ(dialogs->asked.size(), 1U);
    ask("alert('once more')");
}

TEST_F(ScriptDialog, ComesAfterAPlaceInTheSamePageWasShown) {
    load(server->url("/#below"));
    ASSERT_TRUE(waitForScript("location.hash", "#below"));
    ask("alert('here')");
}

TEST_F(ScriptDialog, CanBeRefusedFromTheSecondOn) {
    ask("alert('one'); alert('two'); document.title = confirm('three') + ' ' + confirm('four')");
    EXPECT_FALSE(last().mayBeSilenced);
    dialogs->answer({true});
    ASSERT_TRUE(waitForQuestion(2));
    EXPECT_TRUE(last().mayBeSilenced);
    dialogs->answer({true});
    ASSERT_TRUE(waitForQuestion(3));
    EXPECT_TRUE(last().mayBeSilenced);
    dialogs->answer({true, "", true});
    EXPECT_TRUE(waitForTitle("true false"));
    EXPECT_EQ(dialogs->asked.size(), 3U);
}

TEST_F(ScriptDialog, IsShownAgainOnThePageAfterARefusal) {
    ask("alert('one')");
    dialogs->answer({true, "", true});
    EXPECT_EQ(evaluate("confirm('two')"), "false");
    evaluate("location.hash = 'below'; 1");
    EXPECT_EQ(evaluate("confirm('three')"), "false");
    EXPECT_EQ(dialogs->asked.size(), 1U);
    open(server->url("/next"));
    ask("alert('four')");
}

TEST_F(ScriptDialog, LongAfterAnotherCannotBeRefused) {
    auto time = std::chrono::steady_clock::now();
    const webkit::ShownPage shown(server->url());
    const auto bare =
        gobject::GObjectPointer<WebKitWebView>::share(WEBKIT_WEB_VIEW(webkit_web_view_new()));
    gtk_window_set_child(GTK_WINDOW(window), GTK_WIDGET(bare.get()));
    const webkit::ScriptDialogs own(bare.get(), shown, {dialogs, nullptr}, {[] {}, [] {}, [] {}},
                                    [&time] { return time; });
    webkit_web_view_load_html(
        bare.get(), "<script>setTimeout(() => { while (true) alert('again'); }, 0)</script>",
        nullptr);
    ASSERT_TRUE(waitForQuestion(1));
    dialogs->answer({true});
    time += std::chrono::milliseconds(9999);
    ASSERT_TRUE(waitForQuestion(2));
    EXPECT_TRUE(last().mayBeSilenced);
    EXPECT_EQ(last().host, "") << "of a page without one";
    dialogs->answer({true});
    time += std::chrono::seconds(10);
    ASSERT_TRUE(waitForQuestion(3));
    EXPECT_FALSE(last().mayBeSilenced);
    gtk_window_set_child(GTK_WINDOW(window), nullptr);
}

// The address that the engine names then is that of the page on its way.
TEST_F(ScriptDialog, NamesTheHostThatAsksAndNotTheOneThatItLeadsTo) {
    const MisbehavingServer silent(identity, [](ServerConnection& connection) {
        connection.read();
        connection.waitForPeer();
    });
    begin("location.href = 'https://localhost:" + std::to_string(silent.port()) + "/'");
    ASSERT_TRUE(loop.runUntil([&] { return webkit_web_view_is_loading(native()); }));
    ask("alert('give me your password')");
    EXPECT_EQ(last().host, host());
}

// The engine does not say which frame asks.
TEST_F(ScriptDialog, OfAFrameNamesTheHostOfThePage) {
    const auto other = site({{"/", "<script>confirm('from a frame')</script>"}});
    begin("const frame = document.createElement('iframe'); frame.src = '" + other->origin() +
          "/'; document.body.append(frame)");
    ASSERT_TRUE(waitForQuestion());
    EXPECT_EQ(last().host, host());
    EXPECT_EQ(last().message, "from a frame");
}

} // namespace kelo::test
