#include "common/PanelWatch.h"

#include <stdexcept>

namespace kelo::bench {

namespace {

constexpr std::chrono::seconds patience{30};

} // namespace

PanelWatch::Clock::time_point PanelWatch::awaitEvent(screen::WindowEvent::Kind kind) {
    const auto found = events.await(
        [&](const screen::WindowEvent& event) {
            if (event.kind != kind)
                return false;
            if (window)
                return event.window == *window;
            const auto seen = windows.describe(event.window);
            return seen.overridesRedirect && seen.width >= leastWidth && seen.height >= leastHeight;
        },
        Clock::now() + patience);
    if (!found)
        throw std::runtime_error("No panel has appeared or disappeared.");
    window = found->window;
    return found->time;
}

PanelWatch::Clock::time_point PanelWatch::awaitShown() {
    return awaitEvent(screen::WindowEvent::Kind::mapped);
}

PanelWatch::Clock::time_point PanelWatch::awaitHidden() {
    return awaitEvent(screen::WindowEvent::Kind::unmapped);
}

} // namespace kelo::bench
