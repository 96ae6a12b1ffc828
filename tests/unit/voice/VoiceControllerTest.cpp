#include "voice/VoiceController.h"

#include "fakes/ScopedTestDesktop.h"
#include "log/DebugLog.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

using namespace std::chrono_literals;

struct VoiceControllerTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::shared_ptr<voice::VoiceController> controller = std::make_shared<voice::VoiceController>();

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
    }
    bool visible() const { return !desktop.panels.empty() && desktop.panels.at(0)->visible; }
    std::size_t loads() const { return desktop.webViews.at(0)->loads.size(); }
};

TEST_F(VoiceControllerTest, ConstructionInstallsAndBuildsNothing) {
    EXPECT_TRUE(desktop.monitors.globals.empty());
    EXPECT_TRUE(desktop.made.empty());
    EXPECT_TRUE(desktop.fileSystem().files.empty());
}

TEST_F(VoiceControllerTest, LogHoldsTheHotkeysLineAndThenTheControllers) {
    controller->start(nullptr);
    const std::string& log = desktop.fileSystem().files.at(std::string(log::debugLogPath));
    const auto first = log.find("] hotkey.start global=true local=true\n");
    const auto second = log.find("] VoiceController.start — widget = web /widget host\n");
    ASSERT_NE(first, std::string::npos);
    ASSERT_NE(second, std::string::npos);
    EXPECT_LT(first, second);
}

TEST_F(VoiceControllerTest, StartBuildsNoPanel) {
    controller->start(nullptr);
    EXPECT_TRUE(desktop.made.empty());
}

TEST_F(VoiceControllerTest, FirstTapBuildsLoadsAndShowsTheWidget) {
    controller->start(nullptr);
    tap();
    EXPECT_TRUE(visible());
    EXPECT_EQ(loads(), 1u);
    EXPECT_EQ(desktop.panels.at(0)->frame(), (platform::Rectangle{400, 41, 640, 620}));
}

TEST_F(VoiceControllerTest, TapHidesAndTheNextTapShowsAndReloads) {
    controller->start(nullptr);
    tap();
    tap();
    EXPECT_FALSE(visible());
    tap();
    EXPECT_TRUE(visible());
    EXPECT_EQ(loads(), 2u);
}

TEST_F(VoiceControllerTest, HoldShowsAtTheThresholdAndTheReleaseLeavesIt) {
    controller->start(nullptr);
    press();
    desktop.loop.advance(249ms);
    EXPECT_FALSE(visible());
    desktop.loop.advance(1ms);
    EXPECT_TRUE(visible());
    release();
    EXPECT_TRUE(visible());
}

TEST_F(VoiceControllerTest, HoldWithTheWidgetVisibleDoesNothingAlsoOnRelease) {
    controller->start(nullptr);
    tap();
    desktop.panels.at(0)->calls.clear();
    hold();
    release();
    EXPECT_TRUE(visible());
    EXPECT_EQ(loads(), 1u);
    EXPECT_TRUE(desktop.panels.at(0)->calls.empty());
}

TEST_F(VoiceControllerTest, TapAfterAHoldHides) {
    controller->start(nullptr);
    hold();
    release();
    tap();
    EXPECT_FALSE(visible());
}

TEST_F(VoiceControllerTest, SecondStartChangesNoOutcome) {
    controller->start(nullptr);
    controller->start(nullptr);
    EXPECT_EQ(desktop.monitors.globals.size(), 2u);
    tap();
    EXPECT_TRUE(visible());
    tap();
    EXPECT_FALSE(visible());
    hold();
    release();
    EXPECT_TRUE(visible());
    EXPECT_EQ(loads(), 2u);
}

TEST_F(VoiceControllerTest, TapOrHoldAfterTheControllerIsGoneDoesNothing) {
    controller->start(nullptr);
    tap();
    tap();
    controller.reset();
    tap();
    hold();
    release();
    EXPECT_FALSE(visible());
}

TEST_F(VoiceControllerTest, ToggleDoesWhatATapDoesEvenBeforeTheFirstStart) {
    controller->toggleWidget();
    EXPECT_TRUE(visible());
    controller->toggleWidget();
    EXPECT_FALSE(visible());
    EXPECT_TRUE(desktop.monitors.globals.empty());
}

} // namespace
} // namespace kelo
