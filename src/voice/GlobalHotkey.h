#pragma once

#include "base/async/MainLoop.h"
#include "platform/EventMonitors.h"

#include <chrono>
#include <functional>
#include <memory>

namespace kelo::voice {

/// Recognizes the chord Control + Option in any program. Released before the hold threshold, it is
/// a tap; otherwise, it is a hold with a start and an end. If another key or a mouse button goes
/// down before the threshold, the press belongs to a shortcut of another program. It is dropped:
/// until the chord is released, no action runs. Learns only that there was another press, never
/// which, and consumes no event. Main thread only.
///
/// Must be owned by a shared pointer, because monitors and timer hold it weakly.
class GlobalHotkey final : public std::enable_shared_from_this<GlobalHotkey> {
public:
    using Action = std::function<void()>;

    /// An action may be replaced at any time. While onTap or onHoldEnd runs, the hotkey already
    /// accepts the next press.
    Action onTap = [] {};
    Action onHoldStart = [] {};
    Action onHoldEnd = [] {};

    /// Adds the keyboard monitors, which stay for good. Calling it twice is harmless: the second
    /// handler sees an already handled transition.
    void start();

    /// Called by the monitors with the modifiers that are down now.
    void handleFlagsChanged(platform::ModifierFlags flags);
    /// Called by the monitors when another key or a mouse button goes down.
    void handleOtherPress();
    /// Called by the timer.
    void holdTimerFired();

private:
    void pressed();
    void released();
    void cancelTimer();

    std::shared_ptr<platform::EventMonitor> globalMonitor;
    std::shared_ptr<platform::EventMonitor> localMonitor;
    /// Whether the chord is down.
    bool active = false;
    /// Whether the current or last press has reached the threshold.
    bool didHold = false;
    /// Whether the current press is part of another program's shortcut.
    bool dropped = false;
    std::shared_ptr<Timer> holdTimer;
    const platform::ModifierFlags required =
        platform::modifier::control | platform::modifier::option;
    const std::chrono::duration<double> holdThreshold{0.25};
};

} // namespace kelo::voice
