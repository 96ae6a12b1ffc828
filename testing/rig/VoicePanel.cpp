#include "testing/rig/VoicePanel.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace kelo::rig {

namespace {

constexpr std::chrono::seconds patience{30};
/// A window may get its size, or its program's number, after it has come.
constexpr std::chrono::milliseconds interval{100};
/// Menus and the like are unmanaged windows, too, but smaller.
constexpr int leastWidth = 640;
constexpr int leastHeight = 620;

} // namespace

std::optional<ScreenWindow> VoicePanel::shown(pid_t program) const {
    for (const auto& window : windows.all()) {
        if (window.isMapped && window.overridesRedirect && window.process == program &&
            window.width >= leastWidth && window.height >= leastHeight)
            return window;
    }
    return std::nullopt;
}

ScreenWindow VoicePanel::awaitShown(pid_t program) const {
    const auto deadline = screen::WindowEvents::Clock::now() + patience;
    events.forget();
    while (true) {
        if (const auto found = shown(program))
            return *found;
        const auto now = screen::WindowEvents::Clock::now();
        if (!events.next(std::min(now + interval, deadline)) && now >= deadline)
            throw std::runtime_error("The voice panel did not come. The windows are:\n" +
                                     screen::Windows::picture(windows.all()));
    }
}

void VoicePanel::awaitHidden(pid_t program) const {
    const auto deadline = screen::WindowEvents::Clock::now() + patience;
    events.forget();
    while (shown(program)) {
        if (!events.next(deadline))
            throw std::runtime_error("The voice panel did not go.");
    }
}

Area VoicePanel::contents(const ScreenWindow& panel) const {
    const auto margins = windows.numbers(panel.identifier, "_GTK_FRAME_EXTENTS");
    if (margins.size() != 4)
        return {panel.origin, panel.width, panel.height};
    const int left = static_cast<int>(margins[0]);
    const int right = static_cast<int>(margins[1]);
    const int top = static_cast<int>(margins[2]);
    const int bottom = static_cast<int>(margins[3]);
    return {{panel.origin.x + left, panel.origin.y + top},
            panel.width - left - right,
            panel.height - top - bottom};
}

bool VoicePanel::hasKeyboard(const ScreenWindow& window) const {
    const screen::WindowId focused = windows.focused();
    if (focused == window.identifier)
        return true;
    const auto inside = windows.children(window.identifier);
    return std::ranges::find(inside, focused) != inside.end();
}

} // namespace kelo::rig
