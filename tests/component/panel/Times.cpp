// A tool, not a test: how long the panel takes to come and to go. Times of one machine at one
// moment are nothing a test could hold anybody to.

#include "component/panel/PanelFixture.h"
#include "testing/screen/WindowEvents.h"

#include <gdk/x11/gdkx.h>

#include <algorithm>
#include <cstdio>
#include <future>
#include <vector>

namespace kelo::test {

namespace {

using Clock = std::chrono::steady_clock;
using Kind = screen::WindowEvent::Kind;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

void print(const char* what, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    const auto at = [&](double part) {
        return times[std::size_t(part * double(times.size() - 1))];
    };
    std::printf("%-22s median %6.2f  p95 %6.2f  max %6.2f ms (%zu)\n", what, at(0.5), at(0.95),
                times.back(), times.size());
}

class Times : public PanelFixture {
protected:
    Clock::time_point awaitEvent(Kind kind) {
        const auto found = watch.await(
            [&](const screen::WindowEvent& event) {
                return event.kind == kind && event.window == panelWindow();
            },
            Clock::now() + std::chrono::seconds(10));
        if (!found)
            throw std::runtime_error("the panel did not come or go");
        return found->time;
    }

    screen::WindowEvents watch;
};

TEST_F(Times, OfAPanel) {
    screen::OtherProgram other;
    settle(other);
    std::vector<double> map, call, pixel, hidden;
    constexpr int rounds = 101;
    for (int round = 0; round < rounds; ++round) {
        watch.forget();
        const auto window = panelWindow();
        const int x = box().x + 20;
        const int y = box().y + 300;
        auto seen = std::async(std::launch::async, [&, window] {
            const auto mapped = watch.await(
                [&](const screen::WindowEvent& event) {
                    return event.kind == Kind::mapped && event.window == window;
                },
                Clock::now() + std::chrono::seconds(10));
            while (screen::colorAt(watch.connection(), x, y) != FakeContent::color) {
            }
            return std::pair(mapped->time, Clock::now());
        });
        const auto began = Clock::now();
        panel->makeKeyAndOrderFront();
        panel->makeFirstResponder(content);
        const auto returned = Clock::now();
        using namespace std::chrono_literals;
        loop.runUntil([&] { return seen.wait_for(0s) == std::future_status::ready; });
        const auto [mapped, painted] = seen.get();
        if (round == 0) {
            std::printf("first: mapped %.2f, painted %.2f ms\n", milliseconds(mapped - began),
                        milliseconds(painted - began));
        } else {
            map.push_back(milliseconds(mapped - began));
            call.push_back(milliseconds(returned - began));
            pixel.push_back(milliseconds(painted - began));
        }
        until("the panel has the keyboard", [&] { return windows.focused() == panelWindow(); });
        watch.forget();
        const auto leaving = Clock::now();
        panel->orderOut();
        hidden.push_back(milliseconds(awaitEvent(Kind::unmapped) - leaving));
        until("the other has the keyboard", [&] { return windows.focused() == other.window(); });
        // A frame right after another one is held back to the next refresh; nobody taps that fast.
        const auto rested = Clock::now() + std::chrono::milliseconds(100);
        loop.runUntil([&] { return Clock::now() > rested; });
    }
    print("show call", call);
    print("show to mapped", map);
    print("show to first pixel", pixel);
    print("hide to unmapped", hidden);
    std::vector<double> screens;
    for (int round = 0; round < rounds; ++round) {
        const auto began = Clock::now();
        EXPECT_TRUE(panels.mainScreen());
        screens.push_back(milliseconds(Clock::now() - began));
    }
    print("main screen", screens);
}

} // namespace

} // namespace kelo::test
