#pragma once

#include "base/async/MainLoop.h"
#include "platform/EventMonitors.h"

#include <chrono>
#include <functional>
#include <memory>

namespace kelo::voice {

/// Turns the chord Control + Option, pressed in any program, into a tap (released before the hold
/// threshold) or into the start and the end of a hold. It looks at nothing but which modifiers are
/// down, and takes no key from anybody. Main thread only.
///
/// Monitors and timer hold it weakly, so it lives in a shared pointer.
class GlobalHotkey final : public std::enable_shared_from_this<GlobalHotkey> {
public:
    using Action = std::function<void()>;

    /// Each may be replaced at any time. When one runs, the hotkey is ready for the next press.
    Action onTap = [] {};
    Action onHoldStart = [] {};
    Action onHoldEnd = [] {};

    /// Begins to watch the keyboard. There is no way to stop: a second call watches twice, which
    /// changes nothing, because the second look at a change finds it dealt with.
    void start();

    /// For the monitors: the modifiers that are down now.
    void handleFlagsChanged(platform::ModifierFlags flags);
    /// For the timer.
    void holdTimerFired();

private:
    void pressed();
    void released();

    std::shared_ptr<platform::EventMonitor> globalMonitor;
    std::shared_ptr<platform::EventMonitor> localMonitor;
    /// The chord is down.
    bool active = false;
    /// The current press, or the last one, reached the threshold.
    bool didHold = false;
    std::shared_ptr<Timer> holdTimer;
    const platform::ModifierFlags required =
        platform::modifier::control | platform::modifier::option;
    const std::chrono::duration<double> holdThreshold{0.25};
};

} // namespace kelo::voice
