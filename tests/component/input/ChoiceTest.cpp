#include "component/input/FakeSources.h"
#include "component/input/InputFixture.h"

#include <optional>
#include <vector>

namespace kelo::tests {

using Changes = std::vector<Seen>;
using platform::EventPointer;

namespace {

constexpr Flags chord = control | option;

} // namespace

/// Which source of several the monitors use, and what they give when there is none.
class Choice : public testing::Test {
protected:
    struct Source {
        bool works;
        bool covers;
    };
    void make(std::vector<Source> everyProgram, std::optional<bool> ownWindows) {
        tell.resize(everyProgram.size());
        press.resize(everyProgram.size());
        monitors = std::make_unique<input::KeyboardMonitors>([=, this] {
            ++watches;
            input::KeyboardWatch watch;
            auto made = std::make_unique<FakeFocus>();
            focus = made.get();
            watch.focus = std::move(made);
            for (std::size_t at = 0; at < everyProgram.size(); ++at)
                watch.everyProgram.push_back(std::make_unique<FakeSource>(
                    everyProgram[at].works, everyProgram[at].covers, &tell[at], &press[at]));
            if (ownWindows)
                watch.ownWindows =
                    std::make_unique<FakeSource>(*ownWindows, true, &tellOwn, &pressOwn);
            return watch;
        });
    }
    bool addGlobal() {
        return monitors->addGlobalMonitor(platform::event_mask::flagsChanged,
                                          [this](const platform::Event& event) {
                                              told.push_back({true, event.modifierFlags});
                                          }) != nullptr;
    }
    bool addLocal() {
        return monitors->addLocalMonitor(platform::event_mask::flagsChanged,
                                         [this](const platform::EventPointer& event) {
                                             told.push_back({false, event->modifierFlags});
                                             return event;
                                         }) != nullptr;
    }

    std::unique_ptr<input::KeyboardMonitors> monitors;
    std::vector<input::ModifierSource::Handler> tell;
    input::ModifierSource::Handler tellOwn;
    std::vector<std::function<void()>> press;
    std::function<void()> pressOwn;
    Changes told;
    int watches = 0;
    /// Of the watch made last; the monitors have it.
    FakeFocus* focus = nullptr;
};

TEST_F(Choice, TheFirstSourceThatWorksIsTheOnlyOne) {
    make({{false, true}, {true, true}, {true, true}}, true);
    EXPECT_TRUE(addGlobal());
    EXPECT_TRUE(addLocal());
    ASSERT_TRUE(tell[1]);
    EXPECT_FALSE(tell[2]);
    EXPECT_FALSE(tellOwn);
    tell[1](control);
    EXPECT_EQ(told, (Changes{{true, control}}));
    EXPECT_EQ(watches, 1);
    EXPECT_EQ(FakeSource::alive, 2) << "the source in use, and the one of our windows";
}

TEST_F(Choice, NoSourceIsAskedWhetherItCanBeUsedBecauseThatMayTakeSeconds) {
    FakeSource::askedWhetherAvailable = 0;
    make({{false, true}, {true, true}}, true);
    EXPECT_TRUE(addGlobal());
    EXPECT_TRUE(addLocal());
    EXPECT_EQ(FakeSource::askedWhetherAvailable, 0);
}

TEST_F(Choice, ASourceThatFailsToStartIsFollowedByTheNext) {
    make({{false, true}, {true, true}, {true, true}}, true);
    EXPECT_TRUE(addGlobal());
    ASSERT_TRUE(tell[1]);
    EXPECT_FALSE(tell[2]);
    tell[1](control);
    EXPECT_EQ(told, (Changes{{true, control}}));
    make({{false, true}}, std::nullopt);
    EXPECT_FALSE(addGlobal());
}

TEST_F(Choice, WithoutASourceForOtherProgramsThereIsOnlyTheLocalMonitor) {
    make({{false, true}}, true);
    EXPECT_FALSE(addGlobal());
    EXPECT_TRUE(addLocal());
}

TEST_F(Choice, WithoutAnySourceThereIsNoMonitor) {
    make({}, std::nullopt);
    EXPECT_FALSE(addGlobal());
    EXPECT_FALSE(addLocal());
    make({{false, true}}, false);
    EXPECT_FALSE(addGlobal());
    EXPECT_FALSE(addLocal());
}

TEST_F(Choice, ASourceBlindToOurWindowsIsJoinedByOneThatSeesThem) {
    make({{true, false}}, true);
    EXPECT_TRUE(addGlobal());
    EXPECT_TRUE(tellOwn);
}

TEST_F(Choice, OfTwoSourcesTheOneCountsThatTheFocusIsWith) {
    make({{true, false}}, true);
    ASSERT_TRUE(addGlobal());
    ASSERT_TRUE(addLocal());
    tell[0](chord);
    tellOwn(chord);
    EXPECT_EQ(told, (Changes{{true, chord}}));
    focus->moveTo(true);
    tell[0](0);
    EXPECT_EQ(told, (Changes{{true, chord}})) << "our own source has not told of it";
    tellOwn(0);
    tellOwn(control);
    EXPECT_EQ(told, (Changes{{true, chord}, {false, 0}, {false, control}}));
    focus->moveTo(false);
    EXPECT_EQ(told, (Changes{{true, chord}, {false, 0}, {false, control}, {true, 0}}));
}

TEST_F(Choice, WhereOnlyOurWindowsAreSeenTheEndOfAPressIsTheirsToo) {
    make({}, true);
    EXPECT_FALSE(addGlobal());
    ASSERT_TRUE(addLocal());
    focus->moveTo(true);
    tellOwn(chord);
    focus->moveTo(false);
    EXPECT_EQ(told, (Changes{{false, chord}, {false, 0}}));
}

TEST_F(Choice, AChangeComesAsAnEventOfItsKind) {
    make({{true, true}}, std::nullopt);
    platform::Event seen;
    monitors->addGlobalMonitor(platform::event_mask::flagsChanged,
                               [&seen](const platform::Event& event) { seen = event; });
    tell[0](control);
    EXPECT_EQ(seen.kind, platform::event_mask::flagsChanged);
    EXPECT_EQ(seen.modifierFlags, control);
    EXPECT_EQ(seen.window, nullptr);
}

TEST_F(Choice, AnotherPressGoesToTheMonitorsThatAskForIt) {
    make({{true, true}}, std::nullopt);
    std::vector<platform::Event> seen;
    const auto note = [&seen](const platform::Event& event) { seen.push_back(event); };
    const auto noteHere = [&seen](const EventPointer& event) {
        seen.push_back(*event);
        return event;
    };
    constexpr auto both = platform::event_mask::flagsChanged | platform::event_mask::otherPress;
    EXPECT_TRUE(monitors->addGlobalMonitor(platform::event_mask::otherPress, note));
    EXPECT_TRUE(monitors->addLocalMonitor(both, noteHere));
    addGlobal();
    tell[0](chord);
    press[0]();
    EXPECT_EQ(told, (Changes{{true, chord}}));
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].kind, platform::event_mask::otherPress);
    EXPECT_EQ(seen[0].keyCode, platform::key::other);
    EXPECT_EQ(seen[0].modifierFlags, 0u);
    focus->ours = true;
    press[0]();
    tell[0](0);
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[1].kind, platform::event_mask::otherPress);
    EXPECT_EQ(seen[2].kind, platform::event_mask::flagsChanged);
}

TEST_F(Choice, MonitorsAreCalledInTheOrderAdded) {
    make({{true, true}}, std::nullopt);
    std::vector<int> order;
    for (const int number : {1, 2, 3})
        monitors->addLocalMonitor(platform::event_mask::flagsChanged,
                                  [&order, number](const platform::EventPointer& event) {
                                      order.push_back(number);
                                      return event;
                                  });
    focus->ours = true;
    tell[0](control);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(Choice, KeysOfOtherProgramsAreNotOffered) {
    make({{true, true}}, true);
    EXPECT_EQ(monitors->addGlobalMonitor(platform::event_mask::keyDown, [](const auto&) {}),
              nullptr);
    EXPECT_EQ(watches, 0);
}

TEST_F(Choice, AMonitorOfBothKindsHearsOfModifiersToo) {
    make({{true, true}}, std::nullopt);
    int heard = 0;
    EXPECT_TRUE(monitors->addLocalMonitor(platform::event_mask::flagsChanged |
                                              platform::event_mask::keyDown,
                                          [&heard](const platform::EventPointer& event) {
                                              ++heard;
                                              return event;
                                          }));
    focus->ours = true;
    tell[0](control);
    EXPECT_EQ(heard, 1);
}

TEST_F(Choice, AMonitorAddedByAMonitorHearsTheNextChange) {
    make({{true, true}}, true);
    int later = 0;
    monitors->addGlobalMonitor(platform::event_mask::flagsChanged, [&](const platform::Event&) {
        monitors->addGlobalMonitor(platform::event_mask::flagsChanged,
                                   [&later](const platform::Event&) { ++later; });
    });
    tell[0](control);
    EXPECT_EQ(later, 0);
    tell[0](0);
    EXPECT_EQ(later, 1);
}

} // namespace kelo::tests
