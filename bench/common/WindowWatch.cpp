#include "common/WindowWatch.h"

#include "testing/screen/Picture.h"
#include "testing/screen/Windows.h"

#include <thread>
#include <vector>

namespace kelo::bench {

namespace {

using screen::WindowEvent;

constexpr int smallestWindow = 400;
constexpr std::chrono::milliseconds lookEvery{1};

} // namespace

void WindowWatch::reset() const {
    events.forget();
}

std::optional<WindowWatch::Clock::time_point>
WindowWatch::awaitMapped(Clock::time_point deadline) const {
    const screen::Windows windows(events.connection());
    const auto isProgram = [&](const WindowEvent& event) {
        if (event.kind != WindowEvent::Kind::mapped)
            return false;
        const auto window = windows.describe(event.window);
        return window.width >= smallestWindow && window.height >= smallestWindow;
    };
    const auto event = events.await(isProgram, deadline);
    return event ? std::optional(event->time) : std::nullopt;
}

std::optional<WindowWatch::Clock::time_point>
WindowWatch::awaitColor(Pixel pixel, std::uint32_t color, Clock::time_point deadline) const {
    while (Clock::now() < deadline) {
        if (screen::colorAt(events.connection(), pixel.x, pixel.y) == color)
            return Clock::now();
        std::this_thread::sleep_for(lookEvery);
    }
    return std::nullopt;
}

std::optional<Pixel> WindowWatch::awaitArea(std::uint32_t color, std::size_t least,
                                            Clock::time_point deadline) const {
    while (Clock::now() < deadline) {
        const screen::Picture picture(events.connection());
        std::vector<Pixel> found;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.color(x, y) == color)
                    found.push_back({x, y});
            }
        }
        if (found.size() >= least)
            return found[found.size() / 2];
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return std::nullopt;
}

} // namespace kelo::bench
