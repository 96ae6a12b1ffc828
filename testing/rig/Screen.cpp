#include "testing/rig/Screen.h"

#include <chrono>
#include <thread>
#include <utility>

namespace kelo::rig {

namespace {

constexpr std::chrono::milliseconds moment{150};
constexpr std::chrono::seconds longestUnrest{3};

screen::Picture settled(const screen::XConnection& connection) {
    const auto end = std::chrono::steady_clock::now() + longestUnrest;
    screen::Picture picture(connection);
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(moment);
        screen::Picture next(connection);
        const bool still = picture == next;
        picture = std::move(next);
        if (still)
            break;
    }
    return picture;
}

} // namespace

Screen::Screen() = default;

bool Screen::isDrawn(const Area& area) const {
    return screen::Picture(connection)
        .isDrawn(area.corner.x, area.corner.y, area.width, area.height);
}

void Screen::press(const std::string& key, const std::vector<std::string>& modifiers) const {
    std::vector<screen::KeySymbol> held;
    for (const auto& modifier : modifiers)
        held.push_back(screen::keySymbol(modifier));
    keyboard.press(screen::keySymbol(key), held);
}

void Screen::capture(const std::filesystem::path& file) const {
    settled(connection).save(file);
}

} // namespace kelo::rig
