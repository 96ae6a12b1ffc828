#include "component/webkit/ManualTimers.h"
#include "component/webkit/WindowFixture.h"
#include "linux/webkit/navigation/LoadErrors.h"

#include <gmock/gmock.h>

#include <atomic>

namespace kelo::test {

using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A page that cannot be reached, with time in the test's hands.
class Retry : public WindowFixture {
protected:
    void SetUp() override {
        server =
            std::make_unique<MisbehavingServer>(identity, [this](ServerConnection& connection) {
                while (connection.read()) {
                    if (isDown)
                        return connection.breakOff();
                    connection.write(page("<title>back</title><form method=post></form>"));
                }
            });
        makeView(server->url());
        showInWindow();
    }
    void loadInVain() {
        load(server->url("/"), loadTimeout);
        ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    }
    /// The waits between a notice and the next request.
    std::vector<seconds> waits() const {
        std::vector<seconds> all;
        for (const auto delay : timers.delays)
            if (delay != loadTimeout && delay != answerTimeout && delay != askedAgainAfter)
                all.push_back(std::chrono::duration_cast<seconds>(delay));
        return all;
    }
    /// Has the last of so many waits end in vain, and waits for the next one.
    void waitInVain(std::size_t count) {
        ASSERT_EQ(waits().size(), count);
        ASSERT_TRUE(timers.isPending());
        timers.fire();
        ASSERT_TRUE(loop.runUntil([&] { return waits().size() > count; }));
        const std::string steps = "steps(" + std::to_string(waits().back().count()) + ")";
        ASSERT_TRUE(waitForScript("document.body.innerHTML.includes('" + steps + "')", "true"));
    }
    void show() {
        isDown = false;
        load(server->url("/"), loadTimeout);
        ASSERT_TRUE(waitForTitle("back"));
    }

    static constexpr seconds loadTimeout{7};
    static constexpr seconds answerTimeout{4}; ///< of a process that is to load a page
    static constexpr seconds askedAgainAfter{1};
    ManualTimers timers;
    MainLoop::Installation installation{timers};
    std::atomic<bool> isDown = true;
    std::unique_ptr<MisbehavingServer> server;
};

TEST_F(Retry, PageIsAskedForAfterFiveFifteenAndSixtySeconds) {
    loadInVain();
    EXPECT_THAT(pageText(), HasSubstr("Trying again in"));
    waitInVain(1);
    waitInVain(2);
    timers.fire();
    ASSERT_TRUE(waitForScript("document.body.innerText.includes('Trying again')", "false"));
    EXPECT_THAT(waits(), ElementsAre(seconds(5), seconds(15), seconds(60)));
    EXPECT_FALSE(timers.isPending());
}

// What is generated is no text of the page: before and after the number stand what is translated.
TEST_F(Retry, NoticeCountsTheSecondsInAWholeSentence) {
    loadInVain();
    EXPECT_EQ(evaluate("document.querySelector('.retry').textContent"), "Trying again in ");
    EXPECT_EQ(evaluate("document.querySelector('.retry').dataset.after"), " s");
    EXPECT_THAT(evaluate("getComputedStyle(document.querySelector('.retry'), '::after').content"),
                HasSubstr("counter(left)"));
    EXPECT_EQ(evaluate("document.documentElement.lang"), "en");
}

TEST_F(Retry, PageThatIsBackIsShownAndTheWaitsBeginAnew) {
    loadInVain();
    waitInVain(1);
    isDown = false;
    timers.fire();
    ASSERT_TRUE(waitForTitle("back"));
    isDown = true;
    loadInVain();
    EXPECT_THAT(waits(), ElementsAre(seconds(5), seconds(15), seconds(5)));
}

TEST_F(Retry, PageIsAskedForWhenTheWindowIsShown) {
    loadInVain();
    leaveWindow();
    isDown = false;
    showInWindow();
    EXPECT_TRUE(waitForTitle("back"));
}

TEST_F(Retry, PageIsAskedForWhenTheNetworkReturns) {
    loadInVain();
    isDown = false;
    GNetworkMonitor* const monitor = g_network_monitor_get_default();
    const auto before = server->requests().size();
    g_signal_emit_by_name(monitor, "network-changed", FALSE);
    evaluate("1");
    EXPECT_EQ(server->requests().size(), before) << "it has gone, not returned";
    g_signal_emit_by_name(monitor, "network-changed", TRUE);
    EXPECT_TRUE(waitForTitle("back"));
}

TEST_F(Retry, ShownPageIsLeftAlone) {
    show();
    const auto before = server->requests().size();
    g_signal_emit_by_name(g_network_monitor_get_default(), "network-changed", TRUE);
    leaveWindow();
    showInWindow();
    evaluate("1");
    EXPECT_EQ(server->requests().size(), before);
}

TEST_F(Retry, UserWhoTriesAgainEndsTheWait) {
    loadInVain();
    isDown = false;
    evaluate("document.querySelector('a').click(); 1");
    ASSERT_TRUE(waitForTitle("back"));
    EXPECT_FALSE(timers.isPending());
}

TEST_F(Retry, FormIsNotSentAgain) {
    show();
    isDown = true;
    evaluate("document.forms[0].submit(); 1");
    ASSERT_TRUE(waitForTitle("Kelo cannot reach localhost"));
    EXPECT_THAT(pageText(), Not(HasSubstr("Trying again")));
    EXPECT_THAT(waits(), IsEmpty());
}

TEST_F(Retry, TryAgainHasTheFocus) {
    loadInVain();
    EXPECT_TRUE(waitForScript("document.activeElement.innerText", "Try again"));
}

TEST(UnreachableHeading, NamesTheHostOrTheMissingNetwork) {
    const auto service = Url::parse("https://assistant.example.com/login");
    EXPECT_EQ(webkit::unreachableHeading(service, true), "Kelo cannot reach assistant.example.com");
    EXPECT_EQ(webkit::unreachableHeading(service, false), "You seem to be offline");
    EXPECT_EQ(webkit::unreachableHeading(std::nullopt, true), "This page did not load");
}

TEST(UnreachableHeading, ThisComputerNeedsNoNetworkForItself) {
    for (const char* const address : {"https://localhost:8443/", "https://127.0.0.1/",
                                      "https://[::1]/", "https://kelo.localhost/"}) {
        const auto url = Url::parse(address);
        EXPECT_EQ(webkit::unreachableHeading(url, false), "Kelo cannot reach " + url->host());
    }
}

} // namespace kelo::test
