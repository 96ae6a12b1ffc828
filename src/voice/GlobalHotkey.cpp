#include "voice/GlobalHotkey.h"

#include "log/DebugLog.h"
#include "platform/Desktop.h"

#include <string>

namespace kelo::voice {

using platform::Event;
using platform::EventPointer;
using platform::ModifierFlags;

namespace {

std::string asText(bool value) {
    return value ? "true" : "false";
}

} // namespace

void GlobalHotkey::start() {
    auto& monitors = platform::Desktop::current().eventMonitors();
    const auto handle = [weak = weak_from_this()](const Event& event) {
        if (const auto self = weak.lock())
            self->handleFlagsChanged(event.modifierFlags);
    };
    globalMonitor = monitors.addGlobalMonitor(platform::event_mask::flagsChanged, handle);
    localMonitor = monitors.addLocalMonitor(platform::event_mask::flagsChanged,
                                            [handle](const EventPointer& event) {
                                                handle(*event);
                                                return event;
                                            });
    log::debugLog("hotkey.start global=" + asText(globalMonitor != nullptr) +
                  " local=" + asText(localMonitor != nullptr));
}

void GlobalHotkey::handleFlagsChanged(ModifierFlags flags) {
    const bool down = (flags & required) == required;
    if (down && !active)
        pressed();
    else if (!down && active)
        released();
}

void GlobalHotkey::pressed() {
    active = true;
    didHold = false;
    if (holdTimer)
        holdTimer->invalidate();
    holdTimer = MainLoop::main().scheduleTimer(holdThreshold, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->holdTimerFired();
    });
}

void GlobalHotkey::released() {
    active = false;
    if (holdTimer)
        holdTimer->invalidate();
    holdTimer.reset();
    // A copy, because an action may replace itself.
    const Action action = didHold ? onHoldEnd : onTap;
    action();
}

void GlobalHotkey::holdTimerFired() {
    if (!active)
        return;
    didHold = true;
    const Action action = onHoldStart;
    action();
}

} // namespace kelo::voice
