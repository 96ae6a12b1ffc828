#include "common/KeloWindow.h"

#include <stdexcept>
#include <thread>

namespace kelo::bench {

namespace {

constexpr std::chrono::seconds patience{30};
constexpr std::chrono::milliseconds lookEvery{5};
constexpr int smallestWindow = 300;

} // namespace

KeloWindow::KeloWindow(pid_t kelo) : kelo(kelo) {
    const auto found = watch.awaitArea(accentColor, leastAccentPixels, Clock::now() + patience);
    if (!found || !find())
        throw std::runtime_error("Kelo's main window does not show the page.");
    pixel = *found;
}

std::optional<screen::ScreenWindow> KeloWindow::find() const {
    for (const auto& each : windows.managed())
        if (each.process == kelo && each.isMapped && each.width >= smallestWindow)
            return each;
    return std::nullopt;
}

screen::ScreenWindow KeloWindow::described() const {
    if (const auto found = find())
        return *found;
    throw std::runtime_error("Kelo's main window is not on the screen.");
}

void KeloWindow::close() const {
    windows.tellManager(described().identifier, "_NET_CLOSE_WINDOW");
    connection.flush();
    const auto deadline = Clock::now() + patience;
    while (find()) {
        if (Clock::now() >= deadline)
            throw std::runtime_error("Kelo's main window did not close.");
        std::this_thread::sleep_for(lookEvery);
    }
}

KeloWindow::Clock::time_point KeloWindow::awaitMapped() const {
    if (const auto mapped = watch.awaitMapped(Clock::now() + patience))
        return *mapped;
    throw std::runtime_error("Kelo's main window did not come.");
}

KeloWindow::Clock::time_point KeloWindow::awaitPainted() const {
    if (const auto painted = watch.awaitColor(pixel, accentColor, Clock::now() + patience))
        return *painted;
    throw std::runtime_error("Kelo's page was not painted.");
}

} // namespace kelo::bench
