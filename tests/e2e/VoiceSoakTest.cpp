#include "e2e/VoiceProgramFixture.h"

#include <iostream>

namespace kelo::e2e {

namespace {

constexpr int settlingTaps = 100;
constexpr int allTaps = 2000;
constexpr std::chrono::seconds patience{30};

/// The web engine watches the machine's memory from some time after its start on, by these files.
bool belongsToMemoryWatch(const std::string& target) {
    return target.starts_with("/proc/") || target.starts_with("/sys/fs/cgroup");
}

/// The web engine has one for each of its timers that runs (WebKitGTK 2.52), and a few run from
/// time to time whatever the user does. Nothing else in the program has any. A timer that stays
/// behind after each tap, or after each load, would be far more.
constexpr const char* engineTimer = "anon_inode:[timerfd]";
constexpr std::size_t mostPassingTimers = 6;

/// What must not grow with use.
struct Holdings {
    std::map<std::string, std::size_t> descriptors;
    std::size_t windows = 0;
    std::size_t webProcesses = 0;
    std::size_t threads = 0;
    std::uint64_t memory = 0; ///< KiB

    bool isSameBesideMemory(const Holdings& other) const {
        return descriptors == other.descriptors && windows == other.windows &&
               webProcesses == other.webProcesses && threads == other.threads;
    }

    bool isNoMoreThan(const Holdings& other) const {
        for (const auto& [target, count] : descriptors) {
            const auto found = other.descriptors.find(target);
            const std::size_t before = found == other.descriptors.end() ? 0 : found->second;
            if (count > before + (target == engineTimer ? mostPassingTimers : 0))
                return false;
        }
        return windows <= other.windows && webProcesses <= other.webProcesses &&
               threads <= other.threads && memory <= other.memory + other.memory / 10;
    }
};

std::ostream& operator<<(std::ostream& out, const Holdings& held) {
    std::size_t sum = 0;
    for (const auto& [target, count] : held.descriptors)
        sum += count;
    return out << sum << " file descriptors " << testing::PrintToString(held.descriptors) << ", "
               << held.windows << " X windows, " << held.webProcesses << " web processes, "
               << held.threads << " threads, " << held.memory << " KiB";
}

class VoiceSoak : public VoiceProgramFixture {
protected:
    screen::WindowEvents events;

    /// Taps, and waits until the panel has come or gone by it.
    void tapAndAwait(screen::WindowId window, screen::WindowEvent::Kind kind) const {
        tapChord();
        const auto deadline = std::chrono::steady_clock::now() + patience;
        const auto happened = events.await(
            [&](const screen::WindowEvent& event) {
                return event.window == window && event.kind == kind;
            },
            deadline);
        ASSERT_TRUE(happened) << "A tap did nothing.";
    }

    /// An even number of taps, with the panel hidden before and after.
    void tap(screen::WindowId window, int taps) const {
        for (int done = 0; done < taps; done += 2) {
            tapAndAwait(window, screen::WindowEvent::Kind::mapped);
            tapAndAwait(window, screen::WindowEvent::Kind::unmapped);
            if (HasFatalFailure())
                return;
        }
    }

    /// All windows of the screen that were made through the connection that made this one: the
    /// server gives each connection numbers that differ from all others' in their upper bits.
    std::size_t windowsOfConnection(screen::WindowId window) const {
        constexpr unsigned resourceBits = 21;
        std::size_t count = 0;
        std::vector<screen::WindowId> open{desktop().screen.connection.root()};
        while (!open.empty()) {
            const auto next = open.back();
            open.pop_back();
            if (next >> resourceBits == window >> resourceBits)
                ++count;
            const auto inside = desktop().screen.windows.children(next);
            open.insert(open.end(), inside.begin(), inside.end());
        }
        return count;
    }

    Holdings holdings(screen::WindowId window) const {
        auto descriptors = rig::openDescriptors(kelo->identifier());
        std::erase_if(descriptors,
                      [](const auto& each) { return belongsToMemoryWatch(each.first); });
        return {descriptors, windowsOfConnection(window), webProcesses().size(),
                rig::threadCount(kelo->identifier()), rig::residentSetSize(kelo->identifier())};
    }

    /// What is held once nothing comes or goes any more, memory apart.
    Holdings holdingsAtRest(screen::WindowId window) const {
        Holdings last = holdings(window);
        awaitThat("nothing is under way", [&] {
            const Holdings now = holdings(window);
            const bool same = now.isSameBesideMemory(last);
            last = now;
            return same;
        });
        return last;
    }

    /// Lets the widget's page load to its end, so that nothing of the taps is under way.
    void letLoad() {
        awaitWidgetPage(tapToShow());
        tapToHide();
        events.forget();
    }
};

} // namespace

TEST_F(VoiceSoak, TwoThousandTapsLeaveOnePanelOneViewAndNothingBehind) {
    const auto first = tapToShow();
    awaitWidgetPage(first);
    tapToHide();
    const auto window = first.identifier;
    events.forget();

    tap(window, settlingTaps);
    ASSERT_FALSE(HasFatalFailure());
    letLoad();
    const Holdings before = holdingsAtRest(window);
    for (int done = settlingTaps; done < allTaps; done += settlingTaps) {
        tap(window, settlingTaps);
        ASSERT_FALSE(HasFatalFailure());
        letLoad();
    }
    std::cout << "after " << settlingTaps << " taps: " << before << "\nafter " << allTaps
              << " taps: " << holdingsAtRest(window) << std::endl;
    // The engine's worker threads go by themselves some time after their work.
    awaitThat("nothing is left of the taps", [&] { return holdings(window).isNoMoreThan(before); });

    const auto shown = tapToShow();
    EXPECT_EQ(shown.identifier, window);
    awaitWidgetPage(shown);
    const auto settled = desktop().screen.windows.describe(window);
    std::size_t panels = 0;
    for (const auto& each : desktop().screen.windows.all())
        panels += each.process == kelo->identifier() && each.overridesRedirect &&
                  each.width == settled.width && each.height == settled.height;
    EXPECT_EQ(panels, 1U);
    // One in the main window, one in the panel.
    EXPECT_EQ(desktop().tree.findAll({rig::Place::windows, {rig::Role::widget}, "Web page"}).size(),
              2U);
}

} // namespace kelo::e2e
