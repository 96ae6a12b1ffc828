#include "component/tray/HostScreen.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <poll.h>
#include <stdexcept>

namespace kelo::tests {

namespace {

using Clock = std::chrono::steady_clock;
constexpr int twoFrames = 40;

/// Changes in other programs cause no event here, so the screen is checked periodically.
void pause(int milliseconds) {
    poll(nullptr, 0, milliseconds);
}

} // namespace

void HostScreen::until(const std::string& what, const std::function<bool()>& condition) const {
    const auto end = Clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (Clock::now() > end)
            throw std::runtime_error("never happened: " + what);
        pause(20);
    }
}

screen::Picture HostScreen::still() const {
    std::optional<screen::Picture> last;
    auto since = Clock::now();
    until("the screen stands still", [&] {
        screen::Picture now(connection);
        if (!last || !(now == *last)) {
            last.emplace(std::move(now));
            since = Clock::now();
        }
        return Clock::now() - since > std::chrono::milliseconds(400);
    });
    return std::move(*last);
}

std::optional<Area> HostScreen::changed(const screen::Picture& before) const {
    const screen::Picture now(connection);
    int left = now.width();
    int top = now.height();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < now.height(); ++y)
        for (int x = 0; x < now.width(); ++x)
            if (now.color(x, y) != before.color(x, y)) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    if (right < 0)
        return std::nullopt;
    return Area{left, top, right - left + 1, bottom - top + 1};
}

std::optional<Area> HostScreen::menuWindow() const {
    for (const auto& window : windows.all())
        if (window.isMapped && window.overridesRedirect && window.width > 80 &&
            window.height > 80 && window.height < 400)
            return Area{window.origin.x, window.origin.y, window.width, window.height};
    return std::nullopt;
}

bool HostScreen::hasMenu() const {
    return menuWindow().has_value();
}

Area HostScreen::menu() const {
    std::optional<Area> found;
    until("a menu with four lines that stays where it is", [&] {
        const auto before = found;
        found = menuWindow();
        if (!found || lines(*found).size() != 4)
            found.reset();
        else
            pause(twoFrames);
        return found && found == before;
    });
    return *found;
}

std::vector<Area> HostScreen::lines(const Area& menu) const {
    const screen::Picture picture(connection);
    std::vector<Area> found;
    int begin = -1; // of the line that y is in
    for (int y = menu.y; y <= menu.y + menu.height; ++y) {
        // A row of pixels with text has several colors; a separator or a gap has only one.
        bool hasText = false;
        for (int x = menu.x + 12; x < menu.x + menu.width - 12; ++x)
            hasText = hasText || (y < menu.y + menu.height &&
                                  picture.color(x, y) != picture.color(menu.x + 12, y));
        if (hasText && begin < 0)
            begin = y;
        if (!hasText && begin >= 0) {
            if (y - begin >= 5)
                found.push_back({menu.x, begin, menu.width, y - begin});
            begin = -1;
        }
    }
    return found;
}

bool HostScreen::hasWindow(const std::string& title) const {
    const auto all = windows.managed();
    return std::any_of(all.begin(), all.end(),
                       [&](const auto& window) { return window.title == title; });
}

void HostScreen::close(const std::string& title) const {
    for (const auto& window : windows.managed())
        if (window.title == title)
            windows.tellManager(window.identifier, "_NET_CLOSE_WINDOW");
    until("\"" + title + "\" is closed", [&] { return !hasWindow(title); });
}

void HostScreen::save(const Area& area, const std::filesystem::path& file) const {
    const int left = std::max(0, area.x - 20);
    const int top = std::max(0, area.y - 12);
    screen::Picture(connection, left, top, std::min(area.width + 40, connection.width() - left),
                    std::min(area.height + 24, connection.height() - top))
        .save(file);
}

} // namespace kelo::tests
