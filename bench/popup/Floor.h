#pragma once

#include "testing/screen/XConnection.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

namespace kelo::bench {

/// The lower bound of what can be measured: an empty window, created beforehand and painted by the
/// server, that is shown and hidden by the same rules. Its times are those of the server, the
/// machine and the measurement. Runs in a thread of its own.
class Floor {
public:
    /// The window covers the area.
    Floor(int x, int y, int width, int height);
    ~Floor();
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    void run();
    void takeEvents();
    void modifiersChanged(unsigned modifiers);
    void toggle();
    void show();

    screen::XConnection own;
    screen::WindowId window = 0;
    int firstEvent = 0;
    bool isShown = false;
    bool isDown = false;
    std::optional<Clock::time_point> holdAt;
    std::atomic<bool> ending = false;
    std::thread thread;
};

} // namespace kelo::bench
