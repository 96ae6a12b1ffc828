#include "component/webkit/ConsentFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using permission::Answer;
using permission::Capability;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The service's page in a view without a delegate, where the user decides.
class UserConsent : public ConsentFixture {
protected:
    void SetUp() override {
        userChoice = {permissions, asker};
        peer = std::make_unique<MisbehavingServer>(identity, [](ServerConnection& connection) {
            while (const auto request = connection.read()) {
                if (request->target == "/slow")
                    return connection.waitForPeer();
                connection.write(page("hello"));
            }
        });
        makeView(peer->url());
        useMakeBelieveDevices();
        showInWindow();
        open(peer->url("/"));
    }
    void TearDown() override {
        // The engine notes the end of a capture some seconds later, without a look at whether the
        // view is still there.
        static std::vector<gobject::GObjectPointer<WebKitWebView>> kept;
        if (view)
            kept.push_back(gobject::GObjectPointer<WebKitWebView>::share(native()));
    }

    void request(const std::string& promise) {
        evaluate("window.outcome = ''; " + promise +
                 ".then((stream) => { window.stream = stream; outcome = 'captured' },"
                 "(error) => outcome = error.name); 1");
    }
    void requestAndAwaitQuestion(const std::string& promise) {
        const auto before = asker->questions.size();
        request(promise);
        ASSERT_TRUE(loop.runUntil([&] { return asker->questions.size() > before; }))
            << evaluate("outcome");
    }
    void captureWithLeave(const std::string& promise) {
        requestAndAwaitQuestion(promise);
        asker->answer(true);
        ASSERT_TRUE(waitForScript("outcome", "captured"));
        ASSERT_EQ(evaluate(states), "live");
    }
    std::string stateOf(const std::string& name) {
        evaluate("var state = ''; navigator.permissions.query({name: '" + name +
                 "'}).then((status) => state = status.state, (error) => state = error.name); 1");
        loop.runUntil([&] { return !evaluate("state").empty(); });
        return evaluate("state");
    }

    static constexpr const char* both =
        "navigator.mediaDevices.getUserMedia({audio: true, video: true})";
    static constexpr const char* states =
        "[...new Set(stream.getTracks().map((track) => track.readyState))].join()";
};

TEST_F(UserConsent, ServicesPageIsAskedAboutOnceForEachDevice) {
    captureWithLeave(microphone);
    ASSERT_THAT(asker->questions, SizeIs(1));
    EXPECT_EQ(asker->questions[0].host, "localhost");
    EXPECT_THAT(asker->questions[0].capabilities, ElementsAre(Capability::microphone));
    EXPECT_EQ(remembered(Capability::microphone), Answer::allowed);
    EXPECT_EQ(remembered(Capability::camera), Answer::ask);
    open(peer->url("/"));
    EXPECT_EQ(outcomeOf(microphone), "captured");
    EXPECT_THAT(asker->questions, SizeIs(1));
    captureWithLeave(camera);
    EXPECT_THAT(asker->questions[1].capabilities, ElementsAre(Capability::camera));
}

TEST_F(UserConsent, RefusalIsRemembered) {
    requestAndAwaitQuestion(camera);
    asker->answer(false);
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
    EXPECT_EQ(remembered(Capability::camera), Answer::denied);
    EXPECT_EQ(remembered(Capability::microphone), Answer::ask);
    open(peer->url("/"));
    EXPECT_EQ(outcomeOf(camera), "NotAllowedError");
    EXPECT_EQ(outcomeOf(both), "NotAllowedError");
    EXPECT_THAT(asker->questions, SizeIs(1));
}

TEST_F(UserConsent, QuestionThatIsClosedRefusesThisOnce) {
    requestAndAwaitQuestion(microphone);
    asker->answer(std::nullopt);
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
    EXPECT_FALSE(asker->isOpen);
    EXPECT_EQ(remembered(Capability::microphone), Answer::ask);
    open(peer->url("/"));
    captureWithLeave(microphone);
}

TEST_F(UserConsent, BothDevicesAreOneQuestion) {
    captureWithLeave(both);
    ASSERT_THAT(asker->questions, SizeIs(1));
    EXPECT_THAT(asker->questions[0].capabilities,
                ElementsAre(Capability::microphone, Capability::camera));
    EXPECT_EQ(remembered(Capability::microphone), Answer::allowed);
    EXPECT_EQ(remembered(Capability::camera), Answer::allowed);
}

TEST_F(UserConsent, OnlyWhatIsNotDecidedIsAsked) {
    permissions->remember(Capability::microphone, Answer::allowed);
    requestAndAwaitQuestion(both);
    EXPECT_THAT(asker->questions[0].capabilities, ElementsAre(Capability::camera));
    asker->answer(false);
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
    EXPECT_EQ(remembered(Capability::microphone), Answer::allowed);
}

TEST_F(UserConsent, RequestsThatWaitGetTheSameAnswer) {
    requestAndAwaitQuestion(microphone);
    evaluate("window.second = ''; navigator.mediaDevices.getUserMedia({audio: true})"
             ".then(() => second = 'captured', (error) => second = error.name); 1");
    asker->answer(true);
    EXPECT_TRUE(waitForScript("outcome + second", "capturedcaptured"));
    EXPECT_THAT(asker->questions, SizeIs(1));
}

TEST_F(UserConsent, AnotherOriginsPageIsDeniedWithoutAQuestion) {
    permissions->remember(Capability::microphone, Answer::allowed);
    // Another port is another origin.
    const auto other = site({{"/", "elsewhere"}});
    open(other->url("/"));
    EXPECT_NE(stateOf("microphone"), "granted");
    EXPECT_EQ(outcomeOf(microphone), "NotAllowedError");
    EXPECT_EQ(outcomeOf(camera), "NotAllowedError");
    EXPECT_THAT(asker->questions, IsEmpty());
}

TEST_F(UserConsent, AnotherOriginsFrameIsDeniedWithoutAQuestion) {
    permissions->remember(Capability::microphone, Answer::allowed);
    EXPECT_EQ(saidByAForeignFrame("navigator.mediaDevices.getUserMedia({audio: true}).then("
                                  "() => top.postMessage('captured', '*'),"
                                  "(error) => top.postMessage(error.name, '*'))",
                                  "allow=microphone"),
              "NotAllowedError");
    EXPECT_THAT(asker->questions, IsEmpty());
}

TEST_F(UserConsent, ScreenIsNeverAskedFor) {
    EXPECT_EQ(outcomeOf("navigator.mediaDevices.getDisplayMedia({video: true})"),
              "NotAllowedError");
    EXPECT_THAT(asker->questions, IsEmpty());
}

TEST_F(UserConsent, QuestionGoesWithItsPage) {
    requestAndAwaitQuestion(microphone);
    load(peer->url("/slow"));
    EXPECT_TRUE(loop.runUntil([&] { return !asker->isOpen; }));
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
}

TEST_F(UserConsent, PageIsAskedAboutAfterAPlaceInItWasShown) {
    load(peer->url("/#below"));
    ASSERT_TRUE(waitForScript("location.hash", "#below"));
    requestAndAwaitQuestion(microphone);
}

TEST_F(UserConsent, QuestionGoesWithThePagesProcess) {
    requestAndAwaitQuestion(microphone);
    webkit_web_view_terminate_web_process(native());
    EXPECT_TRUE(loop.runUntil([&] { return !asker->isOpen; }));
    EXPECT_EQ(remembered(Capability::microphone), Answer::ask);
}

TEST_F(UserConsent, QuestionGoesWithItsWindow) {
    requestAndAwaitQuestion(microphone);
    leaveWindow();
    EXPECT_FALSE(asker->isOpen);
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
    EXPECT_EQ(remembered(Capability::microphone), Answer::ask);
}

TEST_F(UserConsent, TakingItBackEndsACaptureAtOnce) {
    captureWithLeave(both);
    permissions->remember(Capability::camera, Answer::ask);
    EXPECT_TRUE(waitForScript(
        "stream.getTracks().map((track) => track.kind + track.readyState).sort().join()",
        "audiolive,videoended"));
    permissions->remember(Capability::microphone, Answer::denied);
    EXPECT_TRUE(waitForScript(states, "ended"));
}

// The engine remembers until the page is left that it was granted a device, and asks nobody.
TEST_F(UserConsent, WhatWasTakenBackIsOfNoUseInTheSamePage) {
    captureWithLeave(microphone);
    permissions->remember(Capability::microphone, Answer::denied);
    ASSERT_TRUE(waitForScript(states, "ended"));
    request(microphone);
    EXPECT_TRUE(waitForScript("outcome !== '' && " + std::string(states) + " === 'ended'", "true"));
    EXPECT_TRUE(loop.runUntil([this] {
        return webkit_web_view_get_microphone_capture_state(native()) ==
               WEBKIT_MEDIA_CAPTURE_STATE_NONE;
    }));
}

TEST_F(UserConsent, WhatWasTakenBackIsAskedForInTheNextPage) {
    captureWithLeave(microphone);
    permissions->remember(Capability::microphone, Answer::ask);
    ASSERT_TRUE(waitForScript(states, "ended"));
    open(peer->url("/"));
    requestAndAwaitQuestion(microphone);
}

TEST_F(UserConsent, ClosedWindowEndsTheCaptureForGood) {
    captureWithLeave(both);
    leaveWindow();
    EXPECT_TRUE(waitForScript(states, "ended"));
    showInWindow();
    EXPECT_EQ(evaluate(states), "ended");
    EXPECT_EQ(outcomeOf(microphone), "captured");
}

TEST_F(UserConsent, ClosedWindowGetsNoDeviceAndAsksNobody) {
    permissions->remember(Capability::camera, Answer::allowed);
    leaveWindow();
    request(microphone);
    request(camera);
    EXPECT_EQ(webkit_web_view_get_camera_capture_state(native()), WEBKIT_MEDIA_CAPTURE_STATE_NONE);
    EXPECT_THAT(asker->questions, IsEmpty());
}

TEST_F(UserConsent, PageCanReadTheAnswer) {
    EXPECT_EQ(stateOf("microphone"), "prompt");
    captureWithLeave(microphone);
    EXPECT_EQ(stateOf("microphone"), "granted");
    EXPECT_EQ(stateOf("camera"), "prompt");
    requestAndAwaitQuestion(camera);
    asker->answer(false);
    ASSERT_TRUE(waitForScript("outcome", "NotAllowedError"));
    EXPECT_EQ(stateOf("camera"), "denied");
    EXPECT_EQ(stateOf("microphone"), "granted");
}

TEST_F(UserConsent, PageCanReadTheAnswerOfAFormerPage) {
    permissions->remember(Capability::microphone, Answer::allowed);
    permissions->remember(Capability::camera, Answer::denied);
    open(peer->url("/"));
    EXPECT_EQ(stateOf("microphone"), "granted");
    // Until the page has tried, the engine tells it "prompt" for "denied".
    EXPECT_EQ(stateOf("camera"), "prompt");
    EXPECT_EQ(outcomeOf(camera), "NotAllowedError");
    EXPECT_EQ(stateOf("camera"), "denied");
}

TEST_F(UserConsent, DelegateDecidesInTheUsersPlace) {
    permissions->remember(Capability::microphone, Answer::denied);
    makeMediaView(peer->url());
    open(peer->url("/"));
    EXPECT_EQ(outcomeOf(both), "captured");
    permissions->remember(Capability::camera, Answer::denied);
    leaveWindow();
    EXPECT_EQ(webkit_web_view_get_microphone_capture_state(native()),
              WEBKIT_MEDIA_CAPTURE_STATE_ACTIVE);
    decider.reset();
    showInWindow();
    open(peer->url("/"));
    EXPECT_EQ(outcomeOf(microphone), "NotAllowedError");
    EXPECT_THAT(asker->questions, IsEmpty());
}

} // namespace kelo::test
