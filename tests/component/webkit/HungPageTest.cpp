#include "component/webkit/ManualTimers.h"
#include "component/webkit/WindowFixture.h"
#include "testing/screen/Pointer.h"

#include <gmock/gmock.h>

#include <atomic>

namespace kelo::test {

using testing::ElementsAre;

/// A page with a script that never ends, in a window.
class HungPage : public WindowFixture {
protected:
    void SetUp() override {
        server = std::make_unique<MisbehavingServer>(
            identity, MisbehavingServer::answering([this](const WireRequest&) {
                return page(mended ? "<title>mended</title>" : "<title>hangs</title>");
            }));
        makeView(server->url());
        showInWindow();
        observer = std::make_shared<const std::function<void()>>(
            [this] { reported.push_back(hosted().answers()); });
    }

    /// Sees what the page is to see.
    GtkEventController* watchedInput() {
        GtkEventController* const input = gtk_event_controller_legacy_new();
        gtk_event_controller_set_propagation_phase(input, GTK_PHASE_CAPTURE);
        gtk_widget_add_controller(GTK_WIDGET(native()), input);
        return input;
    }
    window::HostedPage& hosted() { return dynamic_cast<window::HostedPage&>(*view); }
    void hang() {
        open(server->url("/page?x"));
        hosted().setPageObserver(observer);
        ASSERT_TRUE(hosted().answers());
        webkit_web_view_evaluate_javascript(native(), "while (true) {}", -1, nullptr, nullptr,
                                            nullptr, nullptr, nullptr);
        const screen::XConnection display;
        screen::Pointer(display).click({200, 150});
        ASSERT_TRUE(loop.runUntil([this] { return !hosted().answers(); }));
    }

    std::atomic<bool> mended = false;
    std::unique_ptr<MisbehavingServer> server;
    std::vector<bool> reported;
    std::shared_ptr<const std::function<void()>> observer;
};

TEST_F(HungPage, IsReportedOnceTheUserTriesIt) {
    hang();
    EXPECT_THAT(reported, ElementsAre(false));
}

TEST_F(HungPage, IsNotOneWhoseScriptWaitsForTheUser) {
    open(server->url("/"));
    begin("alert('well?')");
    ASSERT_TRUE(waitForQuestion());
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    const screen::XConnection display;
    screen::Pointer(display).click({20, 280});
    bool isPressed = false;
    const auto press = gobject::connectSignal(
        watchedInput(), "event",
        +[](GtkEventControllerLegacy*, GdkEvent* event, bool* isPressed) -> gboolean {
            *isPressed |= gdk_event_get_event_type(event) == GDK_BUTTON_PRESS;
            return FALSE;
        },
        &isPressed);
    ASSERT_TRUE(loop.runUntil([&] { return isPressed; }));
    EXPECT_EQ(timers.scheduled, 0);
    EXPECT_TRUE(hosted().answers());
}

TEST_F(HungPage, IsNotOneThatTakesEachClick) {
    open(server->url("/"));
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    const screen::XConnection display;
    for (const int clicks : {1, 2}) {
        screen::Pointer(display).click({200, 150});
        EXPECT_TRUE(loop.runUntil([&] { return timers.scheduled == clicks; }));
        EXPECT_EQ(timers.delays.back(), std::chrono::seconds(4));
        EXPECT_TRUE(loop.runUntil([&] { return !timers.isPending(); })) << "not answered in time";
    }
}

TEST_F(HungPage, IsLoadedAgain) {
    hang();
    mended = true;
    hosted().reload();
    ASSERT_TRUE(waitForTitle("mended"));
    EXPECT_TRUE(hosted().answers());
    EXPECT_TRUE(reported.back());
    EXPECT_EQ(server->requests().back().target, "/page?x");
}

TEST_F(HungPage, IsLeftForTheService) {
    hang();
    mended = true;
    hosted().returnToService();
    ASSERT_TRUE(waitForTitle("mended"));
    EXPECT_EQ(server->requests().back().target, "/");
}

TEST_F(HungPage, ThatHangsWhileAnotherPageIsOnItsWayIsLeft) {
    std::atomic<int> requests = 0;
    MisbehavingServer slow(identity, [&](ServerConnection& connection) {
        while (const auto request = connection.read()) {
            if (request->target == "/next" && ++requests == 1)
                return connection.waitForPeer();
            connection.write(page("<title>" + request->target + "</title>"));
        }
    });
    makeView(slow.url());
    open(slow.url("/first"));
    load(slow.url("/next"));
    ASSERT_TRUE(loop.runUntil([&] { return requests == 1; }));
    ASSERT_EQ(evaluate("document.title"), "/first") << "it answers while the page is on its way";
    webkit_web_view_evaluate_javascript(native(), "while (true) {}", -1, nullptr, nullptr, nullptr,
                                        nullptr, nullptr);
    EXPECT_TRUE(waitForTitle("/next"));
    EXPECT_EQ(requests, 2);
}

TEST_F(HungPage, AnswersAgainWhenItsScriptEnds) {
    open(server->url("/"));
    hosted().setPageObserver(observer);
    webkit_web_view_evaluate_javascript(native(),
                                        "const end = Date.now() + 7000; while (Date.now() < end);",
                                        -1, nullptr, nullptr, nullptr, nullptr, nullptr);
    const screen::XConnection display;
    screen::Pointer(display).click({200, 150});
    EXPECT_TRUE(loop.runUntil([this] { return reported == std::vector<bool>{false, true}; }));
}

TEST_F(HungPage, OutOfItsWindowAndBackIsStillLoadedAgain) {
    hang();
    leaveWindow();
    showInWindow();
    mended = true;
    hosted().reload();
    EXPECT_TRUE(waitForTitle("mended"));
}

} // namespace kelo::test
