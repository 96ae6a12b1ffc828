#include "component/webkit/ConsentFixture.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace kelo::test {

using permission::Answer;
using permission::Capability;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// A desktop that keeps what it is to show.
class FakeNotifications final : public notification::DesktopNotifications {
public:
    void show(const std::string& identifier, const notification::Notification& notification,
              std::function<void()> clicked) override {
        ++count;
        EXPECT_EQ(used.insert(identifier).second, true) << "an identifier is used twice";
        shown[identifier] = {notification, std::move(clicked)};
    }
    void withdraw(const std::string& identifier) override { shown.erase(identifier); }

    std::vector<std::string> titles() const {
        std::vector<std::string> all;
        for (const auto& [identifier, one] : shown)
            all.push_back(one.first.title);
        std::ranges::sort(all);
        return all;
    }

    std::map<std::string, std::pair<notification::Notification, std::function<void()>>> shown;
    std::set<std::string> used;
    int count = 0;
};

} // namespace

/// The service's page in a view whose user may be told something.
class WebNotification : public ConsentFixture {
protected:
    void SetUp() override {
        userChoice = {permissions, asker, desktop};
        peer = site({{"/", "hello"}});
    }
    void show() {
        makeView(peer->url());
        showInWindow();
        open(peer->url("/"));
    }
    void showAllowed() {
        permissions->remember(Capability::notifications, Answer::allowed);
        show();
    }
    std::string settled(const std::string& promise) {
        evaluate("window.settled = ''; Promise.resolve().then(() => " + promise +
                 ").then((value) => settled = String(value), (error) => settled = error.name); 1");
        loop.runUntil([&] { return !evaluate("settled").empty(); });
        return evaluate("settled");
    }
    void request() {
        evaluate("window.outcome = '';"
                 "Notification.requestPermission().then((answer) => outcome = answer); 1");
        ASSERT_TRUE(loop.runUntil([&] { return asker->isOpen; }));
    }
    std::string stateOf() {
        return settled("navigator.permissions.query({name: 'notifications'})"
                       ".then((status) => status.state)");
    }
    /// Makes a notification, which is then the page's variable of that name.
    void notify(const std::string& name, const std::string& options = "{}") {
        evaluate("var " + name + " = new Notification('" + name + "', " + options + "); " + name +
                 ".onclose = () => " + name + ".end = 'closed'; " + name + ".onclick = () => " +
                 name + ".end = 'clicked'; 1");
    }
    void notifyAndAwait(const std::string& name, const std::string& options = "{}") {
        const int before = desktop->count;
        notify(name, options);
        ASSERT_TRUE(loop.runUntil([&] { return desktop->count > before; }));
    }

    std::shared_ptr<FakeNotifications> desktop = std::make_shared<FakeNotifications>();
};

TEST_F(WebNotification, ServicesPageIsAskedAboutOnce) {
    show();
    EXPECT_EQ(settled("Notification.permission"), "default");
    EXPECT_EQ(stateOf(), "prompt");
    request();
    EXPECT_THAT(asker->questions[0].capabilities, ElementsAre(Capability::notifications));
    asker->answer(true);
    EXPECT_TRUE(waitForScript("outcome", "granted"));
    EXPECT_EQ(remembered(Capability::notifications), Answer::allowed);
    EXPECT_EQ(settled("Notification.permission"), "granted");
    EXPECT_EQ(stateOf(), "granted");
    open(peer->url("/"));
    EXPECT_EQ(settled("Notification.requestPermission()"), "granted");
    EXPECT_THAT(asker->questions, SizeIs(1));
}

TEST_F(WebNotification, RefusalIsRemembered) {
    show();
    request();
    asker->answer(false);
    EXPECT_TRUE(waitForScript("outcome", "denied"));
    EXPECT_EQ(remembered(Capability::notifications), Answer::denied);
    open(peer->url("/"));
    EXPECT_EQ(settled("Notification.requestPermission()"), "denied");
    EXPECT_THAT(asker->questions, SizeIs(1));
}

TEST_F(WebNotification, QuestionThatIsClosedIsNotRemembered) {
    show();
    request();
    asker->answer(std::nullopt);
    EXPECT_TRUE(waitForScript("outcome", "denied"));
    EXPECT_EQ(remembered(Capability::notifications), Answer::ask);
}

TEST_F(WebNotification, FirstPageKnowsTheAnswerOfAFormerStart) {
    showAllowed();
    EXPECT_EQ(settled("Notification.permission"), "granted");
    endSession();
    permissions->remember(Capability::notifications, Answer::denied);
    show();
    // The engine tells new pages "default" for "denied" until they ask.
    EXPECT_EQ(settled("Notification.permission"), "default");
    EXPECT_EQ(settled("Notification.requestPermission()"), "denied");
    EXPECT_THAT(asker->questions, IsEmpty());
}

TEST_F(WebNotification, ClosedWindowAsksNobody) {
    show();
    leaveWindow();
    EXPECT_EQ(settled("Notification.requestPermission()"), "denied");
    EXPECT_THAT(asker->questions, IsEmpty());
    EXPECT_EQ(permissions->answer(Capability::notifications), Answer::ask);
}

TEST_F(WebNotification, AnotherOriginIsDeniedWithoutAQuestion) {
    showAllowed();
    const auto other = site({{"/", "elsewhere"}});
    open(other->url("/"));
    EXPECT_NE(stateOf(), "granted");
    EXPECT_EQ(settled("Notification.requestPermission()"), "denied");
    EXPECT_THAT(asker->questions, IsEmpty());
    notify("stranger");
    open(peer->url("/"));
    notifyAndAwait("own");
    EXPECT_THAT(desktop->titles(), ElementsAre("own"));
}

TEST_F(WebNotification, AnotherOriginsFrameIsDeniedWithoutAQuestion) {
    show();
    EXPECT_EQ(saidByAForeignFrame("Notification.requestPermission().then("
                                  "(answer) => top.postMessage(answer, '*'))"),
              "denied");
    EXPECT_THAT(asker->questions, IsEmpty());
}

TEST_F(WebNotification, TextIsShownWithoutWhatHidesOrTurnsIt) {
    showAllowed();
    notifyAndAwait("first", "{body: 'a\\u202Eb\\n<b>c</b>' + 'x'.repeat(1000)}");
    const auto& shown = desktop->shown.begin()->second.first;
    EXPECT_EQ(shown.title, "first");
    EXPECT_TRUE(shown.body.starts_with("ab <b>c</b>xxx")) << shown.body;
    EXPECT_TRUE(shown.body.ends_with("x…")) << shown.body;
    EXPECT_EQ(shown.body.size(), 299U + std::string("…").size());
}

TEST_F(WebNotification, ClickReachesThePage) {
    showAllowed();
    notifyAndAwait("first");
    desktop->shown.begin()->second.second();
    EXPECT_TRUE(waitForScript("first.end", "clicked"));
}

TEST_F(WebNotification, IsWithdrawnWhenThePageClosesIt) {
    showAllowed();
    notifyAndAwait("first");
    notifyAndAwait("second");
    evaluate("first.close(); 1");
    EXPECT_TRUE(loop.runUntil([&] { return desktop->shown.size() == 1; }));
    EXPECT_THAT(desktop->titles(), ElementsAre("second"));
    EXPECT_TRUE(waitForScript("first.end", "closed"));
}

TEST_F(WebNotification, FourthTakesThePlaceOfTheOldest) {
    showAllowed();
    for (const char* const name : {"one", "two", "three", "four"})
        notifyAndAwait(name);
    EXPECT_THAT(desktop->titles(), ElementsAre("four", "three", "two"));
    EXPECT_TRUE(waitForScript("one.end", "closed"));
    EXPECT_EQ(evaluate("two.end"), "undefined");
    // The place of one that has gone is free.
    evaluate("two.close(); 1");
    ASSERT_TRUE(loop.runUntil([&] { return desktop->shown.size() == 2; }));
    notifyAndAwait("five");
    EXPECT_THAT(desktop->titles(), ElementsAre("five", "four", "three"));
}

TEST_F(WebNotification, TagTakesThePlaceOfItsNamesakeAlone) {
    showAllowed();
    notifyAndAwait("one");
    notifyAndAwait("two", "{tag: 'mail'}");
    notifyAndAwait("three", "{tag: 'call'}");
    notifyAndAwait("four", "{tag: 'mail'}");
    EXPECT_THAT(desktop->titles(), ElementsAre("four", "one", "three"));
    EXPECT_TRUE(waitForScript("two.end", "closed"));
    EXPECT_EQ(evaluate("one.end"), "undefined");
}

TEST_F(WebNotification, TakingItBackWithdrawsAllAndShowsNoMore) {
    showAllowed();
    notifyAndAwait("one");
    permissions->remember(Capability::notifications, Answer::denied);
    EXPECT_TRUE(loop.runUntil([&] { return desktop->shown.empty(); }));
    EXPECT_TRUE(waitForScript("one.end", "closed"));
    notify("two");
    EXPECT_TRUE(waitForScript("two.end", "closed"));
    EXPECT_EQ(desktop->count, 1);
    EXPECT_NE(stateOf(), "granted");
}

TEST_F(WebNotification, PageWhoseWindowIsClosedStillTellsItsUser) {
    showAllowed();
    leaveWindow();
    notifyAndAwait("one");
    EXPECT_THAT(desktop->titles(), ElementsAre("one"));
}

TEST_F(WebNotification, GoesWithItsView) {
    showAllowed();
    notifyAndAwait("one");
    endSession();
    EXPECT_THAT(desktop->shown, IsEmpty());
}

TEST_F(WebNotification, ViewWithADelegateShowsNone) {
    permissions->remember(Capability::notifications, Answer::allowed);
    makeMediaView(peer->url());
    open(peer->url("/"));
    notify("one");
    EXPECT_TRUE(waitForScript("one.end", "closed"));
    EXPECT_EQ(desktop->count, 0);
}

} // namespace kelo::test
