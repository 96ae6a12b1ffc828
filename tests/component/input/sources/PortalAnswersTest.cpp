#include "PortalFixture.h"

#include "component/LogReader.h"
#include "component/input/FakeSources.h"
#include "linux/input/KeyboardMonitors.h"

#include <gmock/gmock.h>

// What the monitors have of a portal that takes its time, says no, or goes.

namespace kelo {

using input::PortalModifierSource;
using platform::Event;
using platform::EventPointer;
using platform::ModifierFlags;
using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr ModifierFlags chord = control | option;
/// Stands for another press in the list of what was heard. No modifier has this bit.
constexpr ModifierFlags lostPress = ModifierFlags{1} << 60;

class PortalAnswers : public PortalSource {
protected:
    /// Adds the program's first monitors. Returns whether there is a global one.
    bool addMonitors() {
        monitors = std::make_unique<input::KeyboardMonitors>([this] {
            input::KeyboardWatch watch;
            watch.focus = std::make_unique<tests::FakeFocus>();
            watch.everyProgram.push_back(std::move(source));
            watch.ownWindows =
                std::make_unique<tests::FakeSource>(true, true, &tellOwn, &pressInOwn);
            return watch;
        });
        namespace event_mask = platform::event_mask;
        constexpr auto both = event_mask::flagsChanged | event_mask::otherPress;
        const auto note = [this](const Event& event) {
            heard.push_back(event.kind == event_mask::otherPress ? lostPress : event.modifierFlags);
        };
        const auto global = monitors->addGlobalMonitor(both, note);
        local = monitors->addLocalMonitor(both, [note](const EventPointer& event) {
            note(*event);
            return event;
        });
        return global != nullptr;
    }
    bool startNotingPresses() {
        source->onOtherPress([this] { heard.push_back(lostPress); });
        return start();
    }

    input::ModifierSource::Handler tellOwn;
    std::function<void()> pressInOwn;
    std::unique_ptr<input::KeyboardMonitors> monitors;
    std::shared_ptr<platform::EventMonitor> local;
};

} // namespace

TEST_F(PortalAnswers, FirstMonitorDoesNotWaitForAPortalThatNeverAnswers) {
    startPortal();
    portal.suspend();
    EXPECT_TRUE(addMonitors());
    EXPECT_TRUE(local);
    EXPECT_TRUE(tellOwn) << "our own windows are watched at once";
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(PortalAnswers, FirstMonitorDoesNotWaitForABusThatNeverAnswers) {
    startPortal();
    bus.suspend();
    EXPECT_TRUE(addMonitors());
    EXPECT_TRUE(local);
    bus.resume();
}

TEST_F(PortalAnswers, LateAnswerCounts) {
    startPortal();
    portal.suspend();
    ASSERT_TRUE(addMonitors());
    // The portal has its first question by the time that the bus has answered ours.
    ASSERT_TRUE(bus.waitForName(portalName));
    portal.resume();
    ASSERT_TRUE(waitUntilAsked(2));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound));
    press();
    release();
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(chord, 0));
}

TEST_F(PortalAnswers, PortalThatDisappearsWithoutAnAnswerIsFollowedByTheNext) {
    startPortal();
    portal.suspend();
    ASSERT_TRUE(addMonitors());
    ASSERT_TRUE(bus.waitForName(portalName));
    stopPortal();
    startPortal();
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(chord));
}

TEST_F(PortalAnswers, PortalThatDisappearsBeforeTheUserHasAnsweredIsFollowedByTheNext) {
    startPortal(R"({"ignores": "BindShortcuts"})");
    ASSERT_TRUE(addMonitors());
    ASSERT_TRUE(waitUntilAsked(2));
    stopPortal();
    startPortal();
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
}

TEST_F(PortalAnswers, RefusalLeavesOurOwnWindows) {
    startPortal(R"({"refuses": "BindShortcuts"})");
    ASSERT_TRUE(addMonitors());
    ASSERT_TRUE(waitUntilAsked(3));
    press();
    stopPortal();
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_TRUE(tellOwn);
}

TEST_F(PortalAnswers, PortalWithoutShortcutsIsNothingToBeWarnedOf) {
    startPortal(R"({"shortcuts": false})");
    const test::LogReader log;
    ASSERT_TRUE(start());
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] {
        return !log.messages.empty() &&
               log.texts().back() == "hotkey: the portal does not offer global shortcuts";
    }));
    EXPECT_THAT(asked(), ElementsAre("CreateSession"));
    EXPECT_THAT(log.complaints(), IsEmpty());
}

TEST_F(PortalAnswers, ReleaseByTheUserIsNoOtherPress) {
    startPortal();
    ASSERT_TRUE(startNotingPresses());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    release();
    ASSERT_TRUE(waitFor(2));
    stopPortal();
    EXPECT_THAT(heard, ElementsAre(chord, 0));
}

TEST_F(PortalAnswers, PortalThatGoesInTheMiddleOfAPressLeavesNoTap) {
    startPortal();
    ASSERT_TRUE(addMonitors());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    stopPortal();
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(chord, lostPress, 0));
}

TEST_F(PortalAnswers, SessionThatEndsInTheMiddleOfAPressLeavesNoTap) {
    startPortal();
    ASSERT_TRUE(startNotingPresses());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    command("EndSession");
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(chord, lostPress, 0));
}

TEST_F(PortalAnswers, WhoHearsOfALostPressMayLetTheSourceGo) {
    startPortal();
    source->onOtherPress([this] {
        heard.push_back(lostPress);
        source.reset();
    });
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    stopPortal();
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, SizeIs(2));
    EXPECT_FALSE(source);
}

} // namespace kelo
