#include "e2e/VoiceJourney.h"

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

/// What must not grow with use.
struct Holdings {
    std::map<std::string, std::size_t> descriptors;
    std::size_t windows = 0;
    std::size_t webProcesses = 0;
    std::size_t threads = 0;
    std::uint64_t memory = 0; ///< KiB
};

std::ostream& operator<<(std::ostream& out, const Holdings& held) {
    std::size_t sum = 0;
    for (const auto& [target, count] : held.descriptors)
        sum += count;
    return out << sum << " file descriptors " << testing::PrintToString(held.descriptors) << ", "
               << held.windows << " X windows, " << held.webProcesses << " web processes, "
               << held.threads << " threads, " << held.memory << " KiB";
}

class VoiceSoak : public VoiceJourney {
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

    /// What the taps set going is over when the widget's page, loaded once more, is there and gone.
    Holdings settledHoldings(screen::WindowId window) {
        awaitWidgetPage(tapToShow());
        tapToHide();
        std::optional<Holdings> last;
        awaitThat("descriptors and windows stand still", [&] {
            const Holdings now = holdings(window);
            const bool still = last && last->descriptors == now.descriptors &&
                               last->windows == now.windows && last->threads == now.threads &&
                               last->webProcesses == now.webProcesses;
            last = now;
            return still;
        });
        return *last;
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
    const Holdings before = settledHoldings(window);
    events.forget();
    tap(window, allTaps - settlingTaps);
    ASSERT_FALSE(HasFatalFailure());
    const Holdings after = settledHoldings(window);
    std::cout << "after " << settlingTaps << " taps: " << before << "\nafter " << allTaps
              << " taps: " << after << std::endl;

    const auto shown = tapToShow();
    EXPECT_EQ(shown.identifier, window);
    awaitWidgetPage(shown);
    std::size_t panels = 0;
    for (const auto& each : desktop().screen.windows.all())
        panels += each.process == kelo->identifier() && each.overridesRedirect &&
                  each.width == shown.width && each.height == shown.height;
    EXPECT_EQ(panels, 1U);
    // One in the main window, one in the panel.
    EXPECT_EQ(
        desktop().tree.findAll({rig::Place::windows, {rig::Role::widget}, "WebKitWebView"}).size(),
        2U);
    EXPECT_EQ(after.webProcesses, before.webProcesses);
    for (const auto& [target, count] : after.descriptors)
        EXPECT_LE(count, before.descriptors.contains(target) ? before.descriptors.at(target) : 0)
            << target;
    EXPECT_LE(after.windows, before.windows);
    EXPECT_LE(after.threads, before.threads);
    EXPECT_LE(after.memory, before.memory + before.memory / 10);
}

} // namespace kelo::e2e
