// A locked session never shows the widget, which is signed in.
#include "fakes/ScopedTestDesktop.h"
#include "service/ServiceEndpoints.h"
#include "voice/VoiceController.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelo {
namespace {

using namespace std::chrono_literals;

struct LockedSessionTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::shared_ptr<voice::VoiceController> controller = std::make_shared<voice::VoiceController>();

    void SetUp() override { controller->start(nullptr); }
    void press() const {
        desktop.monitors.flagsElsewhere(platform::modifier::control | platform::modifier::option);
    }
    void release() const { desktop.monitors.flagsElsewhere(0); }
    void tap() const {
        press();
        release();
    }
    void hold() {
        press();
        desktop.loop.advance(250ms);
        release();
    }
    bool isVisible() const { return !desktop.panels.empty() && desktop.panels.at(0)->visible; }
    std::ptrdiff_t timesHidden() const {
        return std::ranges::count(desktop.panels.at(0)->calls, "orderOut");
    }
    std::optional<platform::PermissionDecision> askForMicrophone() const {
        return desktop.webViews.at(0)->requestMedia(std::string(service::relyingPartyIdentifier()),
                                                    platform::MediaCaptureType::microphone);
    }
};

TEST_F(LockedSessionTest, NoPressAndNoCommandBuildsLoadsOrShowsAnything) {
    desktop.session.lock();
    tap();
    hold();
    controller->toggleWidget();
    EXPECT_EQ(desktop.session.questions, 3);
    EXPECT_TRUE(desktop.made.empty());
    EXPECT_FALSE(isVisible());
}

TEST_F(LockedSessionTest, HiddenWidgetStaysHiddenAndIsNotReloaded) {
    tap();
    tap();
    desktop.session.lock();
    tap();
    hold();
    controller->toggleWidget();
    EXPECT_FALSE(isVisible());
    EXPECT_EQ(desktop.webViews.at(0)->loads.size(), 1u);
    EXPECT_FALSE(desktop.webViews.at(0)->allowsMediaCapture);
}

TEST_F(LockedSessionTest, PressesDuringTheLockAreNotMadeUpFor) {
    desktop.session.lock();
    tap();
    hold();
    desktop.session.unlock();
    desktop.loop.advance(10s);
    EXPECT_TRUE(desktop.made.empty());
}

TEST_F(LockedSessionTest, AfterTheLockATapAHoldAndACommandWorkAgain) {
    desktop.session.lock();
    tap();
    desktop.session.unlock();
    tap();
    EXPECT_TRUE(isVisible());
    tap();
    hold();
    EXPECT_TRUE(isVisible());
    tap();
    controller->toggleWidget();
    EXPECT_TRUE(isVisible());
}

TEST_F(LockedSessionTest, LockHidesTheShownWidgetOnceAndEndsItsCapture) {
    tap();
    EXPECT_TRUE(desktop.webViews.at(0)->allowsMediaCapture);
    desktop.session.lock();
    EXPECT_FALSE(isVisible());
    EXPECT_FALSE(desktop.webViews.at(0)->allowsMediaCapture);
    desktop.session.lock();
    EXPECT_EQ(timesHidden(), 1);
}

TEST_F(LockedSessionTest, EndOfTheLockDoesNotBringTheWidgetBack) {
    tap();
    desktop.session.lock();
    desktop.session.unlock();
    desktop.loop.advance(10s);
    EXPECT_FALSE(isVisible());
    EXPECT_FALSE(desktop.webViews.at(0)->allowsMediaCapture);
}

TEST_F(LockedSessionTest, ShownWidgetCanBeHiddenWithoutAQuestion) {
    tap();
    EXPECT_EQ(desktop.session.questions, 1);
    tap();
    EXPECT_EQ(desktop.session.questions, 1);
    EXPECT_FALSE(isVisible());
}

TEST_F(LockedSessionTest, SessionIsFollowedFromTheStartSoThatTheFirstPressKnows) {
    EXPECT_TRUE(desktop.isSessionFollowed);
    EXPECT_EQ(desktop.session.questions, 0);
}

TEST_F(LockedSessionTest, LockingIsObservedOnlyWhileTheWidgetIsShown) {
    EXPECT_EQ(desktop.session.observations, 0);
    tap();
    EXPECT_EQ(desktop.session.observations, 1);
    controller->toggleWidget();
    EXPECT_EQ(desktop.session.observations, 0);
    tap();
    hold();
    EXPECT_EQ(desktop.session.observations, 1);
    desktop.session.lock();
    EXPECT_EQ(desktop.session.observations, 0);
}

TEST_F(LockedSessionTest, UncertainAnswerShowsTheWidgetOnceItIsCertain) {
    desktop.session.isUncertain = true;
    tap();
    EXPECT_FALSE(isVisible());
    desktop.session.becomeCertain();
    EXPECT_TRUE(isVisible());
}

TEST_F(LockedSessionTest, LateAnswerLeavesAWidgetThatIsShownByNowAlone) {
    desktop.session.isUncertain = true;
    tap();
    desktop.session.isUncertain = false;
    controller->toggleWidget();
    desktop.panels.at(0)->calls.clear();
    desktop.session.becomeCertain();
    EXPECT_TRUE(desktop.panels.at(0)->calls.empty());
}

TEST_F(LockedSessionTest, LateAnswerDoesNothingOnceTheControllerIsGone) {
    desktop.session.isUncertain = true;
    tap();
    controller.reset();
    desktop.session.becomeCertain();
    EXPECT_TRUE(desktop.made.empty());
}

TEST_F(LockedSessionTest, HidingInAnyWayEndsTheCaptureAndTheNextPageMayCaptureAgain) {
    tap();
    const auto& page = *desktop.webViews.at(0);
    EXPECT_EQ(askForMicrophone(), platform::PermissionDecision::grant);
    desktop.monitors.keyDown(platform::key::escape, desktop.panels.at(0));
    EXPECT_FALSE(page.allowsMediaCapture);
    tap();
    EXPECT_TRUE(page.allowsMediaCapture);
    desktop.webViews.at(0)->post("kelo", std::string("close"));
    EXPECT_FALSE(page.allowsMediaCapture);
}

TEST_F(LockedSessionTest, PageIsLeftBeforeCaptureIsAllowedAgain) {
    tap();
    tap();
    desktop.webViews.at(0)->calls.clear();
    tap();
    const auto& calls = desktop.webViews.at(0)->calls;
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_TRUE(calls[0].starts_with("load "));
    EXPECT_EQ(calls[1], "allow capture");
}

} // namespace
} // namespace kelo
