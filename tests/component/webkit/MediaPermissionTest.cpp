#include "component/webkit/MediaFixture.h"
#include "linux/gobject/GObjectPointer.h"

#include <gmock/gmock.h>

#include <vector>

namespace kelo::test {

using platform::MediaCaptureType;
using platform::PermissionDecision;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class MediaPermission : public MediaFixture {
protected:
    void show() {
        peer = std::make_unique<MisbehavingServer>(identity, [](ServerConnection& connection) {
            while (const auto request = connection.read()) {
                if (request->target == "/slow")
                    return connection.waitForPeer();
                connection.write(page(request->target == "/asks" ? asking : "hello"));
            }
        });
        makeMediaView(peer->url());
        open(peer->url("/"));
    }
    /// Another site, shown instead.
    void visit(const std::string& host) {
        IdentityRequest request;
        request.hosts = {host};
        const auto otherIdentity = authority.issue(request);
        trust(otherIdentity, host.c_str());
        other = std::make_unique<MisbehavingServer>(
            otherIdentity,
            MisbehavingServer::answering([](const WireRequest&) { return page("elsewhere"); }));
        open(*Url::parse("https://" + host + ":" + std::to_string(other->port()) + "/"));
    }
    void startSlowNavigation() {
        const auto before = peer->requests().size();
        load(peer->url("/slow"));
        ASSERT_TRUE(loop.runUntil([&] { return peer->requests().size() > before; }));
    }

    void expectEndWhenForbidden(const std::string& devices) {
        // The engine notes the end some seconds later, without a look at whether the view is still
        // there.
        static std::vector<gobject::GObjectPointer<WebKitWebView>> kept;
        kept.push_back(gobject::GObjectPointer<WebKitWebView>::share(native()));
        // A stream that the page did not keep would end by itself.
        ASSERT_EQ(outcomeOf(devices + ".then((stream) => window.stream = stream)"), "captured");
        const std::string states =
            "[...new Set(stream.getTracks().map((track) => track.readyState))].join()";
        ASSERT_EQ(evaluate(states), "live");
        view->setAllowsMediaCapture(false);
        EXPECT_TRUE(waitForScript(states, "ended"));
    }

    static constexpr const char* asking =
        "<script>navigator.mediaDevices.getUserMedia({audio: true}).then("
        "() => top.postMessage('captured', '*'),"
        "(error) => top.postMessage(error.name, '*'))</script>";

    std::unique_ptr<MisbehavingServer> peer;
    std::unique_ptr<MisbehavingServer> other;
};

TEST_F(MediaPermission, DelegateIsToldPageAndDevice) {
    show();
    EXPECT_EQ(outcomeOf(microphone), "captured");
    EXPECT_EQ(outcomeOf(camera), "captured");
    open(peer->url("/"));
    EXPECT_EQ(outcomeOf("navigator.mediaDevices.getUserMedia({audio: true, video: true})"),
              "captured");
    EXPECT_THAT(decider->types, ElementsAre(MediaCaptureType::microphone, MediaCaptureType::camera,
                                            MediaCaptureType::cameraAndMicrophone));
    ASSERT_THAT(decider->origins, SizeIs(3));
    EXPECT_EQ(decider->origins.front().scheme, "https");
    EXPECT_EQ(decider->origins.front().host, "localhost");
    EXPECT_EQ(decider->origins.front().port, peer->port());
}

TEST_F(MediaPermission, EveryPageAsksAnew) {
    show();
    EXPECT_EQ(outcomeOf(microphone), "captured");
    open(peer->url("/"));
    decider->answer = PermissionDecision::deny;
    EXPECT_EQ(outcomeOf(microphone), "NotAllowedError");
}

TEST_F(MediaPermission, AnotherHostIsNamedAsItself) {
    show();
    visit("other.localhost");
    outcomeOf(microphone);
    ASSERT_THAT(decider->origins, SizeIs(1));
    EXPECT_EQ(decider->origins.back().host, "other.localhost");
    EXPECT_EQ(decider->origins.back().port, other->port());
    open(peer->url("/"));
    outcomeOf(microphone);
    ASSERT_THAT(decider->origins, SizeIs(2));
    EXPECT_EQ(decider->origins.back().host, "localhost");
}

TEST_F(MediaPermission, FrameOfTheServiceInAnotherHostsPageCountsAsThatHost) {
    show();
    visit("other.localhost");
    evaluate("addEventListener('message', (event) => window.heard = event.data);"
             "document.body.innerHTML = '<iframe allow=microphone></iframe>';"
             "document.querySelector('iframe').src = '" +
             peer->origin() + "/asks'; 1");
    decider->answer = PermissionDecision::deny;
    ASSERT_TRUE(waitForScript("window.heard", "NotAllowedError"));
    ASSERT_THAT(decider->origins, SizeIs(1));
    for (const auto& origin : decider->origins)
        EXPECT_EQ(origin.host, "other.localhost");
}

TEST_F(MediaPermission, RefusalsReachThePage) {
    show();
    for (const auto answer : {PermissionDecision::deny, PermissionDecision::prompt}) {
        decider->answer = answer;
        open(peer->url("/"));
        EXPECT_EQ(outcomeOf(microphone), "NotAllowedError");
    }
    EXPECT_THAT(decider->types, SizeIs(2));
}

TEST_F(MediaPermission, AnswerMayComeLater) {
    show();
    decider->answer.reset();
    evaluate("var outcome = ''; " + std::string(microphone) +
             ".then(() => outcome = 'captured', (error) => outcome = error.name); 1");
    ASSERT_TRUE(loop.runUntil([&] { return decider->waiting != nullptr; }));
    EXPECT_EQ(evaluate("outcome"), "");
    decider->waiting(PermissionDecision::grant);
    EXPECT_TRUE(waitForScript("outcome", "captured"));
    decider->waiting(PermissionDecision::deny);
    EXPECT_EQ(outcomeOf(microphone), "captured");
}

TEST_F(MediaPermission, AnswerThatNeverComesIsARefusal) {
    show();
    decider->answer.reset();
    evaluate("var outcome = ''; " + std::string(microphone) +
             ".then(() => outcome = 'captured', (error) => outcome = error.name); 1");
    ASSERT_TRUE(loop.runUntil([&] { return decider->waiting != nullptr; }));
    decider->waiting = nullptr;
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
}

TEST_F(MediaPermission, AnswerThatComesAfterThePageIsLeftIsARefusal) {
    show();
    decider->answer.reset();
    evaluate("var outcome = ''; " + std::string(microphone) +
             ".then(() => outcome = 'captured', (error) => outcome = error.name); 1");
    ASSERT_TRUE(loop.runUntil([&] { return decider->waiting != nullptr; }));
    startSlowNavigation();
    decider->waiting(PermissionDecision::grant);
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
}

TEST_F(MediaPermission, AnswerMayOutliveTheView) {
    show();
    decider->answer.reset();
    evaluate(std::string(microphone) + "; 1");
    ASSERT_TRUE(loop.runUntil([&] { return decider->waiting != nullptr; }));
    endSession();
    decider->waiting(PermissionDecision::grant);
}

TEST_F(MediaPermission, NothingIsAskedWhileANavigationIsUnderWay) {
    show();
    startSlowNavigation();
    EXPECT_EQ(outcomeOf(microphone), "NotAllowedError");
    EXPECT_THAT(decider->types, IsEmpty());
    webkit_web_view_stop_loading(native());
    ASSERT_TRUE(loop.runUntil([&] { return !webkit_web_view_is_loading(native()); }));
    open(peer->url("/"));
    EXPECT_EQ(outcomeOf(microphone), "captured");
}

TEST_F(MediaPermission, NavigationThatWasStoppedLeavesThePageItsRights) {
    show();
    startSlowNavigation();
    webkit_web_view_stop_loading(native());
    ASSERT_TRUE(loop.runUntil([&] { return !webkit_web_view_is_loading(native()); }));
    EXPECT_EQ(outcomeOf(microphone), "captured");
}

TEST_F(MediaPermission, NavigationWithinThePageIsNone) {
    show();
    evaluate("history.pushState({}, '', '/deeper'); location.hash = 'part'; 1");
    EXPECT_EQ(outcomeOf(microphone), "captured");
}

TEST_F(MediaPermission, ScreenIsNeverCaptured) {
    show();
    EXPECT_EQ(outcomeOf("navigator.mediaDevices.getDisplayMedia({video: true})"),
              "NotAllowedError");
    EXPECT_THAT(decider->types, IsEmpty());
}

TEST_F(MediaPermission, ViewWithoutDelegateHasNoDevices) {
    peer = site({{"/", "hello"}});
    makeView(peer->url());
    useMakeBelieveDevices();
    open(peer->url("/"));
    EXPECT_EQ(evaluate("typeof navigator.mediaDevices"), "undefined");
}

TEST_F(MediaPermission, DelegateThatHasGoneGrantsNothing) {
    show();
    const std::weak_ptr<MediaDecider> gone = decider;
    decider.reset();
    ASSERT_TRUE(gone.expired());
    EXPECT_EQ(outcomeOf(microphone), "NotAllowedError");
}

TEST_F(MediaPermission, PageLearnsNothingOfTheDevicesBeforeItMayUseThem) {
    show();
    evaluate("var names = '?'; navigator.mediaDevices.enumerateDevices()"
             ".then((all) => names = all.map((one) => one.label + one.deviceId).join('')); 1");
    EXPECT_TRUE(waitForScript("names", ""));
    const auto stateOf = [this](const std::string& name) {
        evaluate("var state = ''; navigator.permissions.query({name: '" + name +
                 "'}).then((status) => state = status.state, (error) => state = error.name); 1");
        loop.runUntil([&] { return !evaluate("state").empty(); });
        return evaluate("state");
    };
    // The engine tells pages "prompt" for "denied", too.
    for (const char* const name : {"microphone", "camera", "geolocation"})
        EXPECT_EQ(stateOf(name), "prompt") << name;
}

TEST_F(MediaPermission, ForbiddenCaptureIsDeniedWithoutAskingTheDelegateUntilItIsAllowed) {
    show();
    view->setAllowsMediaCapture(false);
    EXPECT_EQ(outcomeOf(microphone), "NotAllowedError");
    EXPECT_EQ(outcomeOf(camera), "NotAllowedError");
    EXPECT_THAT(decider->types, IsEmpty());
    view->setAllowsMediaCapture(true);
    EXPECT_EQ(outcomeOf(microphone), "captured");
}

TEST_F(MediaPermission, GrantThatComesAfterCaptureWasForbiddenIsADenial) {
    show();
    decider->answer.reset();
    evaluate("window.outcome = ''; navigator.mediaDevices.getUserMedia({audio: true}).then(() => "
             "outcome = 'captured', (error) => outcome = error.name); 1");
    ASSERT_TRUE(loop.runUntil([&] { return decider->waiting != nullptr; }));
    view->setAllowsMediaCapture(false);
    view->setAllowsMediaCapture(true);
    decider->waiting(PermissionDecision::grant);
    EXPECT_TRUE(waitForScript("outcome", "NotAllowedError"));
}

TEST_F(MediaPermission, MicrophoneThatRunsEndsWhenCaptureIsForbidden) {
    show();
    expectEndWhenForbidden(microphone);
}

TEST_F(MediaPermission, CameraThatRunsEndsWhenCaptureIsForbidden) {
    show();
    expectEndWhenForbidden(camera);
}

TEST_F(MediaPermission, MicrophoneAndCameraThatRunEndWhenCaptureIsForbidden) {
    show();
    expectEndWhenForbidden("navigator.mediaDevices.getUserMedia({audio: true, video: true})");
}

} // namespace kelo::test
